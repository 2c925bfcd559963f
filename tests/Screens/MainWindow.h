#pragma once

#include "tests/OrvUI/ModelFixture.h"

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

namespace orv::test {

/// The window over a model with a folder of its own; whatever QML complains of fails the test.
class MainWindow : public ModelFixture {
protected:
    MainWindow();
    ~MainWindow() override;

    void open(QSize size);
    /// The quick panel in its place.
    void openPanel();
    /// The visible items of a component.
    [[nodiscard]] QList<QQuickItem*> items(const QByteArray& component, QQuickItem* below = nullptr) const;
    [[nodiscard]] QQuickItem* item(const QByteArray& component) const;
    /// The first visible item of the component whose text is this, or whose name is for those who do not see it.
    [[nodiscard]] QQuickItem* named(const QByteArray& component, const QString& text) const {
        for (QQuickItem* item : items(component)) {
            if (item->property("text").toString() == text || item->property("title").toString() == text) {
                return item;
            }
        }
        ADD_FAILURE() << component.toStdString() << " \"" << text.toStdString() << "\" is not to be seen";
        return nullptr;
    }

    /// The first visible button of whatever kind with this text.
    [[nodiscard]] QQuickItem* button(const QString& text, QQuickItem* below = nullptr) const {
        for (QQuickItem* item : (below != nullptr ? below : window->contentItem())->childItems()) {
            if (!item->isVisible()) {
                continue;
            }
            if (item->inherits("QQuickAbstractButton") && item->property("text").toString() == text) {
                return item;
            }
            if (QQuickItem* found = button(text, item)) {
                return found;
            }
        }
        return nullptr;
    }

    /// Where the keys go, for the message of a failure.
    [[nodiscard]] std::string focus() const {
        QString names;
        for (const QQuickItem* item = window->activeFocusItem(); item != nullptr; item = item->parentItem()) {
            names += QString::fromUtf8(item->metaObject()->className()) + QChar(u' ');
        }
        return names.toStdString();
    }

    /// By the mouse, in its middle.
    void click(QQuickItem* item) const {
        ASSERT_NE(item, nullptr);
        const QPointF middle = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
        QTest::mouseClick(window, Qt::LeftButton, {}, middle.toPoint());
    }

    void press(int key, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::keyClick(window, static_cast<Qt::Key>(key), modifiers);
    }

    void type(const QString& text) const {
        for (const QChar letter : text) {
            QTest::keyClick(window, letter.toLatin1());
        }
    }

    QQuickWindow* window = nullptr;

private:
    QtMessageHandler m_before = nullptr;
    std::unique_ptr<QQmlApplicationEngine> m_engine;
    std::unique_ptr<QQuickView> m_panel;
};

} // namespace orv::test
