#pragma once

#include <QDBusConnection>
#include <QRect>

#include <optional>

namespace orv::test {

/// What assistive tools see of an application: the way in which a test finds a control without knowing where it is
/// drawn.
///
/// Over AT-SPI (org.a11y.atspi.Accessible and .Component).
class AccessibleTree {
public:
    struct Item {
        QString name;
        QString role; ///< as AT-SPI words it: "push button", "link"
        QRect place;  ///< on the screen
        bool isShowing = false;
    };

    /// `sessionBus` is the address of the desktop's bus; the accessibility bus is asked of it.
    explicit AccessibleTree(const QString& sessionBus);
    ~AccessibleTree();
    Q_DISABLE_COPY_MOVE(AccessibleTree)

    /// Everything that there is, from all windows of the application of that name.
    [[nodiscard]] QList<Item> items(const QString& application) const;
    /// The first item with that name that has a place on the screen.
    [[nodiscard]] std::optional<Item> find(const QString& application, const QString& name) const;

private:
    struct Reference {
        QString service;
        QString path;
    };

    [[nodiscard]] QList<Reference> children(const Reference& parent) const;
    [[nodiscard]] QString property(const Reference& item, const QString& name) const;
    void collect(const Reference& item, int depth, QList<Item>& found) const;

    QString m_sessionBus;
    QDBusConnection m_bus;
};

} // namespace orv::test
