#include "tests/Screens/MainWindow.h"

#include "OrvUI/Screens/Registration.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

QStringList warnings;

void collect(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    Q_UNUSED(context)
    if (type != QtDebugMsg && type != QtInfoMsg) {
        warnings.append(text);
    }
}

} // namespace

MainWindow::MainWindow() {
    warnings.clear();
    m_before = qInstallMessageHandler(collect);
    model->skipOnboarding();
}

MainWindow::~MainWindow() {
    m_panel.reset();
    m_engine.reset();
    qInstallMessageHandler(m_before);
    EXPECT_EQ(warnings, QStringList());
}

void MainWindow::open(QSize size) {
    m_engine = std::make_unique<QQmlApplicationEngine>();
    registerScreens(*m_engine);
    m_engine->setInitialProperties({{u"model"_s, QVariant::fromValue(model.get())}, {u"ownFrame"_s, true}});
    m_engine->load(QUrl(u"qrc:/qt/qml/OrvLauncher/Screens/Main.qml"_s));
    ASSERT_FALSE(m_engine->rootObjects().isEmpty()) << warnings.join(u'\n').toStdString();
    window = qobject_cast<QQuickWindow*>(m_engine->rootObjects().constFirst());
    window->resize(size);
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
}

void MainWindow::openPanel() {
    m_engine = std::make_unique<QQmlApplicationEngine>();
    registerScreens(*m_engine);
    m_panel = std::make_unique<QQuickView>(m_engine.get(), nullptr);
    m_panel->setInitialProperties({{u"model"_s, QVariant::fromValue(model.get())}});
    m_panel->setSource(QUrl(u"qrc:/qt/qml/OrvLauncher/Screens/QuickPanel.qml"_s));
    ASSERT_NE(m_panel->rootObject(), nullptr) << warnings.join(u'\n').toStdString();
    window = m_panel.get();
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
}

QList<QQuickItem*> MainWindow::items(const QByteArray& component, QQuickItem* below) const {
    QList<QQuickItem*> found;
    for (QQuickItem* item : (below != nullptr ? below : window->contentItem())->childItems()) {
        if (!item->isVisible()) {
            continue;
        }
        if (QByteArray(item->metaObject()->className()).startsWith(component + "_QML")) {
            found.append(item);
        }
        found += items(component, item);
    }
    return found;
}

QQuickItem* MainWindow::item(const QByteArray& component) const {
    const QList<QQuickItem*> found = items(component);
    EXPECT_FALSE(found.isEmpty()) << component.toStdString();
    return found.value(0);
}

} // namespace orv::test
