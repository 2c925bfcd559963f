#include "StatusItem.h"

#include "OrvUI/AppModel.h"
#include "OrvUI/QuickActions.h"
#include "WidgetPalette.h"

#ifdef Q_OS_MACOS
#include "OrvLauncher/platform/macos/MenuBarItem.h"
#endif

#include <QGuiApplication>
#include <QMenu>
#include <QPainter>
#include <QSystemTrayIcon>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// A name in a menu, where one "&" alone marks a key.
static QString inMenu(QString name) {
    return name.replace(u'&', u"&&"_s);
}

#ifndef Q_OS_MACOS

constexpr int greatestCount = 9; ///< more is "9+"

/// The glyph with the count in a disc at its lower right, a gap around the disc.
QPixmap picture(int pixels, int count, bool isPanelDark) {
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor ink = isPanelDark ? QColor(u"#ECEEF2"_s) : QColor(u"#1F2227"_s);
    painter.save();
    painter.scale(pixels / 18.0, pixels / 18.0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    painter.drawEllipse(QPointF(9, 9), 8, 8);
    // The bolt is cut out of the disc.
    painter.translate(9, 9);
    painter.scale(0.56, 0.56);
    painter.translate(-12, -12);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.setPen(QPen(Qt::black, 1.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::black);
    painter.drawPolygon(QPolygonF{{1, 10.9}, {13.9, 17.2}, {13.3, 13}, {23, 13.1}, {10.1, 6.8}, {10.7, 11}});
    painter.restore();
    if (count == 0) {
        return pixmap;
    }
    const qreal unit = pixels / 22.0;
    const qreal size = 12 * unit;
    const QRectF disc(pixels - size, pixels - size, size, size);
    const qreal gap = 1.5 * unit;
    painter.setPen(Qt::NoPen);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.drawEllipse(disc.adjusted(-gap, -gap, gap, gap));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setBrush(ink);
    painter.drawEllipse(disc);
    QFont font(u"Inter"_s);
    font.setWeight(QFont::DemiBold);
    font.setPixelSize(qRound((count > greatestCount ? 7.5 : 9) * unit));
    painter.setFont(font);
    painter.setPen(isPanelDark ? Qt::black : Qt::white);
    painter.drawText(disc, Qt::AlignCenter, count > greatestCount ? u"9+"_s : QString::number(count));
    return pixmap;
}

#endif

} // namespace

#ifdef Q_OS_MACOS

StatusItem::StatusItem(AppModel& model, QObject* parent)
    : QObject(parent),
      m_model(model),
      m_menu(std::make_unique<QMenu>()),
      m_dockMenu(std::make_unique<QMenu>()),
      m_menuBarItem(std::make_unique<MenuBarItem>(MenuBarItem::Handlers{
          .clicked = [this] { Q_EMIT panelAsked(); },
          .menuAsked = [this] { m_menu->popup(place().bottomLeft()); },
      })) {
    m_dockMenu->setAsDockMenu();
    connect(m_menu.get(), &QMenu::aboutToShow, this, &StatusItem::fillMenu);
    connect(&model, &AppModel::servicesChanged, this, &StatusItem::update);
    connect(&model, &AppModel::isQuittingChanged, this, &StatusItem::tellOfQuitting);
    // The Dock shows its menu as it was left: nobody asks for it to be filled.
    for (const auto signal : {&AppModel::projectsChanged, &AppModel::pinsChanged, &AppModel::servicesChanged}) {
        connect(&model, signal, this, &StatusItem::fillMenu);
    }
    fillMenu();
    update();
}

StatusItem::~StatusItem() = default;

QRect StatusItem::place() const {
    return m_menuBarItem->place();
}

void StatusItem::showCount(int /*count*/) {
    m_menuBarItem->setTitle(m_model.menuBarTitle());
}

void StatusItem::showToolTip(const QString& text) {
    m_menuBarItem->setToolTip(text);
}

#else

StatusItem::StatusItem(AppModel& model, QObject* parent)
    : QObject(parent), m_model(model), m_menu(std::make_unique<QMenu>()), m_icon(std::make_unique<QSystemTrayIcon>()) {
    connect(m_menu.get(), &QMenu::aboutToShow, this, &StatusItem::fillMenu);
    connect(m_icon.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger) {
            Q_EMIT panelAsked();
        } else if (reason == QSystemTrayIcon::MiddleClick) {
            Q_EMIT windowAsked();
        }
    });
    connect(&model, &AppModel::servicesChanged, this, &StatusItem::update);
    connect(&model, &AppModel::isQuittingChanged, this, &StatusItem::tellOfQuitting);
    fillMenu();
    m_icon->setContextMenu(m_menu.get());
    update();
    m_icon->show();
}

StatusItem::~StatusItem() {
    m_icon->hide();
}

QRect StatusItem::place() const {
    return m_icon->geometry();
}

void StatusItem::showCount(int count) {
    QIcon icon;
    for (const int pixels : {16, 22, 24, 32, 44, 48, 64}) {
        icon.addPixmap(picture(pixels, count, m_isPanelDark));
    }
    m_icon->setIcon(icon);
}

void StatusItem::showToolTip(const QString& text) {
    m_icon->setToolTip(text);
}

#endif

bool StatusItem::isAvailable() {
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void StatusItem::setPanelDark(bool isDark) {
    if (std::exchange(m_isPanelDark, isDark) != isDark) {
        m_shownCount = -1;
        update();
    }
}

void StatusItem::update() {
    const int left = m_model.leftCount();
    const int count = m_model.runningCount() + left;
    const bool isShown = m_shownCount == count && m_shownLeft == left;
    m_shownCount = count;
    m_shownLeft = left;
    if (isShown) {
        return;
    }
    showCount(count);
    const QString name = QGuiApplication::applicationDisplayName();
    const QString counted =
        count == 1 ? tr("%1: 1 service running").arg(name) : tr("%1: %2 services running").arg(name).arg(count);
    showToolTip(
        m_model.isQuitting() ? tr("%1 is quitting").arg(name)
        : count == 0         ? name
        : left == 0          ? counted
        : left == count      ? tr("%1 from last time").arg(counted)
                             : tr("%1, %2 from last time").arg(counted).arg(left));
}

void StatusItem::tellOfQuitting() {
    m_shownCount = -1;
    update();
    fillMenu();
}

/// The pinned projects and the quick panel: what the Dock's menu has, and the icon's begins with. The Dock shows
/// pictures beside the names; a tray mostly shows none, so that words have to do.
void StatusItem::addPinned(QMenu& menu) {
    const QList<PinnedEntry> pinned = m_model.pinnedEntries();
    for (const PinnedEntry& entry : pinned) {
        QAction* action =
            menu.addAction(inMenu(entry.title), this, [this, id = entry.id] { m_model.toggleProject(id); });
        if (const Project* project = m_model.project(entry.id); project != nullptr && &menu == m_dockMenu.get()) {
            QIcon picture(
                u":/qt/qml/OrvLauncher/Screens/icons/own-%1-fill.svg"_s.arg(entry.isRunning ? u"stop" : u"play"));
            picture.setIsMask(true);
            action->setText(inMenu(project->name));
            action->setIcon(picture);
        }
    }
    if (pinned.isEmpty()) {
        menu.addAction(tr("Pin projects in OrvLauncher to list them here"))->setEnabled(false);
    }
    menu.addSeparator();
    menu.addAction(tr("Quick Panel (%1)").arg(QCoreApplication::translate("PlatformWords", "⌃⌥⌘L")), this, [this] {
        Q_EMIT panelAsked();
    });
}

void StatusItem::fillMenu() {
    m_menu->clear();
    m_menu->setPalette(WidgetPalette::ofTheme()); // of no meaning where the desktop draws it
    if (m_dockMenu) {
        m_dockMenu->clear();
    }
    if (m_model.isQuitting()) {
        m_menu->addAction(tr("OrvLauncher is quitting"))->setEnabled(false);
        return;
    }
    addPinned(*m_menu);
    if (m_dockMenu) {
        addPinned(*m_dockMenu);
    }
    m_menu->addAction(tr("Open OrvLauncher"), this, [this] { Q_EMIT windowAsked(); });
    m_menu->addSeparator();
    m_menu->addAction(tr("Quit"), this, [this] { Q_EMIT quitAsked(); });
}

} // namespace orv
