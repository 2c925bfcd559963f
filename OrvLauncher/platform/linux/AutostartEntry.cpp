#include "OrvLauncher/platform/linux/AutostartEntry.h"

#include "OrvLauncher/platform/LoginItem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// As any string of a desktop entry (freedesktop.org, desktop entries: possible value types).
QString escaped(const QString& value) {
    QString text = value;
    return text.replace(u'\\', u"\\\\"_s).replace(u'\n', u"\\n"_s).replace(u'\t', u"\\t"_s).replace(u'\r', u"\\r"_s);
}

bool isTrue(const QString& value) {
    return value.compare(u"true", Qt::CaseInsensitive) == 0;
}

/// The value of a key of the main group; null where there is none.
QString valueOf(const QString& entry, const QString& key) {
    bool isInMainGroup = false;
    for (const QString& line : entry.split(u'\n')) {
        const QString trimmed = line.trimmed();
        if (trimmed.startsWith(u'[')) {
            isInMainGroup = trimmed == u"[Desktop Entry]";
        } else if (isInMainGroup && trimmed.section(u'=', 0, 0).trimmed() == key) {
            return trimmed.section(u'=', 1).trimmed();
        }
    }
    return {};
}

/// The program of an "Exec" value, as `execValue` and people write it; empty when there is none.
QString programOf(const QString& exec) {
    QString text = exec;
    text.replace(u"\\\\"_s, u"\\"_s); // the string's own escapes come first
    const bool isQuoted = text.startsWith(u'"');
    QString program;
    for (qsizetype i = isQuoted ? 1 : 0; i < text.size() && text[i] != (isQuoted ? u'"' : u' '); ++i) {
        const bool isEscape = (isQuoted && text[i] == u'\\') || text.sliced(i).startsWith(u"%%");
        i += isEscape && i + 1 < text.size() ? 1 : 0;
        program += text[i];
    }
    return program;
}

/// Whether the desktop would find it: by its path, or in the folders of $PATH.
bool isThere(const QString& program) {
    return program.startsWith(u'/') ? QFileInfo(program).isExecutable()
                                    : !QStandardPaths::findExecutable(program).isEmpty();
}

/// The file itself, where it is packed into an image that is mounted elsewhere at every start.
QString runningExecutable() {
    const QString ours = QCoreApplication::applicationFilePath();
    const QString image = qEnvironmentVariable("APPIMAGE");
    // A program inherits both from another one that is packed so and started it.
    const QString mounted = qEnvironmentVariable("APPDIR");
    const bool isPacked = !image.isEmpty() && !mounted.isEmpty() && ours.startsWith(mounted + u'/');
    return isPacked ? image : ours;
}

} // namespace

AutostartEntry::AutostartEntry(const QString& configFolder, QString executable)
    : m_path(configFolder + u"/autostart/orvlauncher.desktop"_s), m_executable(std::move(executable)) {}

bool AutostartEntry::isEnabled() const {
    QFile file(m_path);
    if (!file.open(QFile::ReadOnly)) {
        return false;
    }
    const QString entry = QString::fromUtf8(file.readAll());
    const QString gnome = valueOf(entry, u"X-GNOME-Autostart-enabled"_s);
    return isThere(programOf(valueOf(entry, u"Exec"_s))) && !isTrue(valueOf(entry, u"Hidden"_s)) &&
           (gnome.isEmpty() || isTrue(gnome));
}

std::expected<void, QString> AutostartEntry::setEnabled(bool isEnabled) {
    if (!isEnabled) {
        if (QFile file(m_path); QFileInfo::exists(m_path) && !file.remove()) {
            return std::unexpected(tr("%1 could not be removed: %2.").arg(m_path, file.errorString()));
        }
        return {};
    }
    const std::optional<QString> exec = execValue(m_executable);
    if (!exec) {
        return std::unexpected(tr("%1 can't start at login: its path holds \"=\".").arg(m_executable));
    }
    const QString entry = u"[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=OrvLauncher\n"
                          "Comment=Finds, starts and watches your projects\n"
                          "Icon=orvlauncher\n"
                          "TryExec=%1\n"
                          "Exec=%2 -OrvInTray\n"
                          "Terminal=false\n"
                          "X-GNOME-Autostart-enabled=true\n"_s;
    const bool hasFolder = QDir().mkpath(QFileInfo(m_path).path());
    QSaveFile file(m_path);
    const QByteArray bytes = entry.arg(escaped(m_executable), *exec).toUtf8();
    if (!hasFolder || !file.open(QFile::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        return std::unexpected(tr("%1 could not be written: %2.").arg(m_path, file.errorString()));
    }
    return {};
}

std::optional<QString> AutostartEntry::execValue(const QString& executable) {
    if (executable.contains(u'=')) {
        return {};
    }
    QString quoted;
    for (const QChar character : executable) {
        if (u"\"`$\\"_s.contains(character)) {
            quoted += u'\\';
        }
        quoted += character;
        if (character == u'%') {
            quoted += u'%';
        }
    }
    return escaped(u'"' + quoted + u'"');
}

std::unique_ptr<LoginItemController> makeLoginItem() {
    // $XDG_CONFIG_HOME, or ~/.config.
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return std::make_unique<AutostartEntry>(folder, runningExecutable());
}

} // namespace orv
