#pragma once

#include <QDBusConnection>
#include <QRect>

#include <cstdint>
#include <functional>
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

    /// Everything that has a place on the screen, from all windows of the application of that name that are shown.
    [[nodiscard]] QList<Item> items(const QString& application) const;
    /// The first of them with that name, controls before texts.
    [[nodiscard]] std::optional<Item> find(const QString& application, const QString& name) const;
    /// Whether the application knows itself to have the focus.
    [[nodiscard]] bool isActive(const QString& application) const;

private:
    enum class State : std::uint8_t { active = 1, showing = 25 }; ///< numbers of AtspiStateType
    struct Reference {
        QString service;
        QString path;
    };

    [[nodiscard]] QList<Reference> children(const Reference& parent) const;
    [[nodiscard]] QString property(const Reference& item, const QString& name) const;
    [[nodiscard]] bool has(const Reference& item, State state) const;
    [[nodiscard]] QList<Reference> windows(const QString& application, State state) const;
    [[nodiscard]] QRect place(const Reference& item) const;
    [[nodiscard]] Item itemOf(const Reference& item, const QString& name) const;
    /// Gets each item with its name, those above before those below, until it answers false.
    using Visitor = std::function<bool(const Reference&, const QString&)>;
    bool visit(const Reference& item, int depth, const Visitor& visitor) const;
    void visit(const QString& application, const Visitor& visitor) const;

    QString m_sessionBus;
    QDBusConnection m_bus;
};

} // namespace orv::test
