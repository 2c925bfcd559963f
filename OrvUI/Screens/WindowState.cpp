#include "OrvUI/Screens/WindowState.h"

#include "OrvCore/Async.h"
#include "OrvCore/StoreFile.h"

#include <QDir>
#include <QFile>
#include <QSettings>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// More than anybody has open; a broken file may ask for any number.
constexpr int mostTerminals = 100;

QStringList sorted(QStringList list) {
    list.sort();
    return list;
}

/// Of an enumeration that ends with `last`; the default where the file holds anything else.
template <typename Enum>
Enum read(const QSettings& ini, const QString& key, Enum last, Enum byDefault) {
    bool isNumber = false;
    const int value = ini.value(key).toInt(&isNumber);
    return isNumber && value >= 0 && value <= static_cast<int>(last) ? static_cast<Enum>(value) : byDefault;
}

double readFontSize(const QSettings& ini) {
    const double size = ini.value(u"terminalFontSize"_s).toDouble();
    const bool isOne = size >= TerminalStyle::smallestSize && size <= TerminalStyle::largestSize;
    return isOne ? size : TerminalStyle::usualSize;
}

QHash<QString, bool> readHomeFolders(const QSettings& ini) {
    QHash<QString, bool> folders;
    for (const bool isOpen : {false, true}) {
        for (const QString& path : ini.value(isOpen ? u"homeOpened"_s : u"homeClosed"_s).toStringList()) {
            folders.insert(path, isOpen);
        }
    }
    return folders;
}

void writeHomeFolders(QSettings& ini, const QHash<QString, bool>& folders) {
    ini.setValue(u"homeOpened"_s, sorted(folders.keys(true)));
    ini.setValue(u"homeClosed"_s, sorted(folders.keys(false)));
}

QList<TerminalPlace> readTerminals(QSettings& ini) {
    QList<TerminalPlace> places;
    const int count = std::min(ini.beginReadArray(u"terminals"_s), mostTerminals);
    for (int i = 0; i < count; ++i) {
        ini.setArrayIndex(i);
        const QString folder = ini.value(u"folder"_s).toString();
        if (!folder.isEmpty()) {
            const QString directory = ini.value(u"directory"_s, folder).toString();
            places.append(
                {QUrl::fromLocalFile(directory), QUrl::fromLocalFile(folder), ini.value(u"title"_s).toString(),
                 ini.value(u"use"_s).toInt()});
        }
    }
    ini.endArray();
    return places;
}

void writeTerminals(QSettings& ini, const QList<TerminalPlace>& places) {
    ini.remove(u"terminals"_s);
    ini.beginWriteArray(u"terminals"_s, static_cast<int>(places.size()));
    for (int i = 0; i < places.size(); ++i) {
        ini.setArrayIndex(i);
        ini.setValue(u"directory"_s, places[i].directory.toLocalFile());
        ini.setValue(u"folder"_s, places[i].folder.toLocalFile());
        ini.setValue(u"title"_s, places[i].title);
        ini.setValue(u"use"_s, places[i].lastUse);
    }
    ini.endArray();
}

void write(const WindowState& state, const QString& file) {
    QSettings ini(file, QSettings::IniFormat);
    ini.setValue(u"geometry"_s, state.geometry);
    ini.setValue(u"maximized"_s, state.isMaximized);
    ini.setValue(u"sidebarHidden"_s, state.isSidebarHidden);
    ini.setValue(u"systemDark"_s, state.isSystemDark);
    ini.setValue(u"page"_s, static_cast<int>(state.page.kind));
    ini.setValue(u"pageID"_s, state.page.id);
    ini.setValue(u"section"_s, static_cast<int>(state.page.section));
    ini.setValue(u"tab"_s, static_cast<int>(state.tab));
    ini.setValue(u"terminalFontSize"_s, state.terminalFontSize);
    ini.setValue(u"agentPanel"_s, state.agentPanelID);
    ini.setValue(u"log"_s, state.logKey);
    ini.setValue(u"outline"_s, sorted(state.outline.values()));
    writeHomeFolders(ini, state.homeFolders);
    writeTerminals(ini, state.terminals);
}

} // namespace

WindowState WindowState::load(const QString& file) {
    const WindowState defaults;
    QSettings ini(file, QSettings::IniFormat);
    const QStringList outline = ini.value(u"outline"_s).toStringList();
    return {
        .geometry = ini.value(u"geometry"_s).toRect(),
        .isMaximized = ini.value(u"maximized"_s, defaults.isMaximized).toBool(),
        .isSidebarHidden = ini.value(u"sidebarHidden"_s, defaults.isSidebarHidden).toBool(),
        .isSystemDark = ini.value(u"systemDark"_s, defaults.isSystemDark).toBool(),
        .page =
            {read(ini, u"page"_s, AppPage::Kind::ai, defaults.page.kind), ini.value(u"pageID"_s).toString(),
             read(ini, u"section"_s, SettingsSection::projects, defaults.page.section)},
        .tab = read(ini, u"tab"_s, DetailTab::files, defaults.tab),
        .terminalFontSize = readFontSize(ini),
        .agentPanelID = ini.value(u"agentPanel"_s).toString(),
        .logKey = ini.value(u"log"_s).toString(),
        .outline = QSet<QString>(outline.begin(), outline.end()),
        .homeFolders = readHomeFolders(ini),
        .terminals = readTerminals(ini),
    };
}

void WindowState::save(const QString& file) const {
    // QSettings leaves a lock file and an unfinished copy where it is killed, and waits for a lock whose holder seems
    // to live: in a folder of their own they are nobody's.
    const QString scratch = file + u".made"_s;
    const QString made = scratch + u"/window.ini"_s;
    QDir(scratch).removeRecursively();
    QDir().mkpath(scratch);
    write(*this, made);
    QFile content(made);
    if (content.open(QIODevice::ReadOnly)) {
        if (const StoreResult written = StoreIO::write(file, content.readAll()); !written) {
            qWarning("%s", qUtf8Printable(written.error().text()));
        }
    }
    QDir(scratch).removeRecursively();
}

WindowStateWriter::WindowStateWriter(QString file) : m_file(std::move(file)) {
    m_pool.setObjectName(u"orv-window-state"_s);
    m_pool.setMaxThreadCount(1);
}

void WindowStateWriter::write(const WindowState& state) {
    ORV_ASSERT_MAIN_THREAD();
    if (m_last == state) {
        return;
    }
    m_last = state;
    m_pool.clear(); // those that have not begun: this one has all of them
    m_pool.start([state, file = m_file] { state.save(file); });
}

void WindowStateWriter::flush() {
    ORV_ASSERT_MAIN_THREAD();
    m_pool.waitForDone();
}

QRect WindowState::fitted(QRect geometry, const QList<QRect>& screens, QSize minimum) {
    QRect home;
    qsizetype most = -1;
    for (const QRect& screen : screens) {
        const QRect shown = screen.intersected(geometry);
        const qsizetype area = shown.isValid() ? qsizetype(shown.width()) * shown.height() : 0;
        if (area > most) {
            most = area;
            home = screen;
        }
    }
    if (home.isEmpty()) {
        return geometry;
    }
    const QSize size = geometry.size().boundedTo(home.size()).expandedTo(minimum);
    const int x = qBound(home.left(), geometry.x(), qMax(home.left(), home.right() + 1 - size.width()));
    const int y = qBound(home.top(), geometry.y(), qMax(home.top(), home.bottom() + 1 - size.height()));
    return {QPoint(x, y), size};
}

} // namespace orv
