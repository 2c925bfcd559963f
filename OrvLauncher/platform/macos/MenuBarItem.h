#pragma once

#include <QRect>
#include <QString>

#include <functional>
#include <memory>

namespace orv {

/// The application's item in the menu bar: its mark, and beside it a title. Qt's own has no title. Main thread.
class MenuBarItem {
public:
    struct Handlers {
        std::function<void()> clicked;
        std::function<void()> menuAsked; ///< by the right button, or with Control
    };
    explicit MenuBarItem(Handlers handlers);
    ~MenuBarItem();
    MenuBarItem(const MenuBarItem&) = delete;
    MenuBarItem& operator=(const MenuBarItem&) = delete;

    void setTitle(const QString& title);
    void setToolTip(const QString& text);
    /// On the screen; null where a crowded menu bar hides it.
    [[nodiscard]] QRect place() const;

private:
    struct Item;
    std::unique_ptr<Item> m_item;
};

} // namespace orv
