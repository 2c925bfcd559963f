#include "QuickPanel.h"

#include "OrvLauncher/platform/Compositing.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/Screens/InputMode.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>

#include <algorithm>
#include <chrono>

namespace orv {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Until the focus has settled: another window may still be losing or getting it.
constexpr auto openingTime = 400ms;

constexpr int fromRight = 12;
constexpr int fromTop = 8;

} // namespace

QuickPanel::QuickPanel(AppModel& model, QQmlEngine& engine, QObject* parent)
    : QObject(parent), m_model(model), m_engine(engine) {}

QuickPanel::~QuickPanel() = default;

bool QuickPanel::isShown() const {
    return m_view && m_view->isVisible();
}

QPoint QuickPanel::position(QSize panel, const QRect& icon, const QRect& screen) {
    if (icon.isEmpty() || !screen.adjusted(-icon.width(), -icon.height(), icon.width(), icon.height()).contains(icon)) {
        return {screen.right() + 1 - fromRight - panel.width(), screen.top() + fromTop};
    }
    const int left = icon.center().x() - panel.width() / 2;
    const bool isIconAbove = icon.center().y() < screen.center().y();
    const int top = isIconAbove ? icon.bottom() + 1 + fromTop : icon.top() - fromTop - panel.height();
    return {
        std::clamp(
            left, screen.left() + fromTop,
            std::max(screen.left() + fromTop, screen.right() + 1 - fromTop - panel.width())),
        std::clamp(
            top, screen.top() + fromTop,
            std::max(screen.top() + fromTop, screen.bottom() + 1 - fromTop - panel.height()))};
}

void QuickPanel::make() {
    m_view = std::make_unique<QQuickView>(&m_engine, nullptr);
    m_view->setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::NoDropShadowWindowHint);
    m_view->setColor(Qt::transparent);
    m_view->setTitle(tr("Quick panel"));
    m_view->setResizeMode(QQuickView::SizeViewToRootObject);
    m_view->setInitialProperties({{u"model"_s, QVariant::fromValue(&m_model)}});
    m_view->setSource(QUrl(u"qrc:/qt/qml/OrvLauncher/Screens/QuickPanel.qml"_s));
    QQuickItem* root = m_view->rootObject();
    if (root == nullptr) {
        return;
    }
    m_engine.singletonInstance<InputMode*>(qmlTypeId("OrvLauncher.Screens", 1, 0, "InputMode"))->watch(m_view.get());
    connect(root, SIGNAL(windowAsked()), this, SIGNAL(windowAsked()));
    connect(root, SIGNAL(settingsAsked()), this, SIGNAL(settingsAsked()));
    connect(root, SIGNAL(quitAsked()), this, SIGNAL(quitAsked()));
    connect(root, SIGNAL(closeAsked()), this, SLOT(hide()));
    connect(m_view.get(), &QQuickView::activeChanged, this, &QuickPanel::activeChanged);
    // The lists grow while it is open.
    connect(m_view.get(), &QQuickView::heightChanged, this, [this] {
        if (const QScreen* screen = m_view->screen(); isShown() && screen != nullptr) {
            m_view->setPosition(position(m_view->size(), m_icon, screen->availableGeometry()));
        }
    });
}

void QuickPanel::activeChanged() {
    if (m_view->isActive() || !isShown()) {
        return;
    }
    if (m_opening.hasExpired()) {
        hide();
    } else {
        m_view->requestActivate();
    }
}

void QuickPanel::toggle(const QRect& icon) {
    if (isShown()) {
        hide();
        return;
    }
    if (!m_view) {
        make();
    }
    if (m_view->rootObject() == nullptr) {
        return;
    }
    m_icon = icon;
    m_model.refresh(); // it may be all that anybody looks at for days
    QScreen* screen = icon.isEmpty() ? nullptr : QGuiApplication::screenAt(icon.center());
    screen = screen != nullptr ? screen : QGuiApplication::primaryScreen();
    if (screen != nullptr) {
        m_view->setScreen(screen);
        m_view->setPosition(position(m_view->size(), icon, screen->availableGeometry()));
    }
    m_opening.setRemainingTime(openingTime);
    // What lies outside of round corners would be black.
    m_view->rootObject()->setProperty("square", !hasCompositor());
    m_view->show();
    m_view->raise();
    m_view->requestActivate();
}

void QuickPanel::hide() {
    if (m_view) {
        m_view->hide();
    }
}

} // namespace orv
