#include "OrvUI/Screens/ControlRoles.h"

#include <QAccessible>
#include <QPointer>
#include <QtGlobal>

#include <functional>
#include <type_traits>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr QLatin1StringView controlClass("QQuickControl");

/// What Qt says of an item, but for what is told, and of a control for texts in it that its name says already. Qt's own
/// interface is looked up by its number, for nobody knows in which order the two of an item are deleted.
class ToldInterface : public QAccessibleInterface {
public:
    explicit ToldInterface(QAccessibleInterface& qt) : m_object(qt.object()), m_id(QAccessible::uniqueId(&qt)) {}

    [[nodiscard]] QAccessible::Role role() const override {
        if (m_object.isNull()) {
            return QAccessible::NoRole;
        }
        const auto role = static_cast<QAccessible::Role>(m_object->property("toldRole").toInt());
        return role != QAccessible::NoRole ? role : ask(&QAccessibleInterface::role);
    }

    [[nodiscard]] bool isValid() const override { return ask(&QAccessibleInterface::isValid); }
    [[nodiscard]] QObject* object() const override { return m_object; }
    [[nodiscard]] QWindow* window() const override { return ask(&QAccessibleInterface::window); }
    [[nodiscard]] QList<QPair<QAccessibleInterface*, QAccessible::Relation>> relations(
        QAccessible::Relation match) const override {
        return ask(&QAccessibleInterface::relations, match);
    }
    [[nodiscard]] QAccessibleInterface* focusChild() const override { return ask(&QAccessibleInterface::focusChild); }
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override {
        return ask(&QAccessibleInterface::childAt, x, y);
    }
    [[nodiscard]] QAccessibleInterface* parent() const override { return ask(&QAccessibleInterface::parent); }
    [[nodiscard]] QAccessibleInterface* child(int index) const override { return children().value(index); }
    [[nodiscard]] int childCount() const override { return static_cast<int>(children().size()); }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override {
        return static_cast<int>(children().indexOf(child));
    }
    /// Qt takes each "&" out of a control's text, as the mark of a key.
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        const QString told = ask(&QAccessibleInterface::text, kind);
        const QString own =
            kind == QAccessible::Name && !m_object.isNull() ? m_object->property("text").toString() : QString();
        return own.contains(u'&') && QString(own).remove(u'&') == QString(told).remove(u'&') ? own : told;
    }
    void setText(QAccessible::Text kind, const QString& text) override {
        ask(&QAccessibleInterface::setText, kind, text);
    }
    [[nodiscard]] QRect rect() const override { return ask(&QAccessibleInterface::rect); }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = ask(&QAccessibleInterface::state);
        state.modal = !m_object.isNull() && m_object->property("toldModal").toBool();
        return state;
    }
    [[nodiscard]] QColor foregroundColor() const override { return ask(&QAccessibleInterface::foregroundColor); }
    [[nodiscard]] QColor backgroundColor() const override { return ask(&QAccessibleInterface::backgroundColor); }
    void* interface_cast(QAccessible::InterfaceType type) override {
        return ask(&QAccessibleInterface::interface_cast, type);
    }

private:
    [[nodiscard]] QList<QAccessibleInterface*> children() const {
        const bool isControl = !m_object.isNull() && m_object->inherits(controlClass.data());
        const QString name = isControl ? text(QAccessible::Name) : QString();
        QList<QAccessibleInterface*> found;
        const int count = ask(&QAccessibleInterface::childCount);
        for (int i = 0; i < count; ++i) {
            QAccessibleInterface* child = ask(&QAccessibleInterface::child, i);
            const bool isSaid = isControl && child != nullptr && child->role() == QAccessible::StaticText &&
                                name.contains(child->text(QAccessible::Name));
            if (!isSaid) {
                found.append(child);
            }
        }
        return found;
    }

    /// What Qt's own says; nothing where that is gone.
    template <typename Function, typename... Arguments>
    std::invoke_result_t<Function, QAccessibleInterface*, const Arguments&...> ask(
        Function function, const Arguments&... arguments) const {
        using Answer = std::invoke_result_t<Function, QAccessibleInterface*, const Arguments&...>;
        QAccessibleInterface* qt = m_object.isNull() ? nullptr : QAccessible::accessibleInterface(m_id);
        return qt != nullptr ? std::invoke(function, qt, arguments...) : Answer();
    }

    const QPointer<QObject> m_object;
    const QAccessible::Id m_id;
};

QAccessibleInterface* interfaceOf(const QString& className, QObject* object) {
    // Asked in turn for each class of the object, the innermost first.
    static bool isAskingQt = false;
    const bool isControl = QT_VERSION < QT_VERSION_CHECK(6, 5, 0) && className == controlClass;
    const bool isSheet = className == "QQuickFocusScope"_L1 && object->property("toldModal").isValid();
    if (isAskingQt || (!isControl && !isSheet)) {
        return nullptr;
    }
    isAskingQt = true;
    QAccessibleInterface* qt = QAccessible::queryAccessibleInterface(object);
    isAskingQt = false;
    return qt != nullptr ? new ToldInterface(*qt) : nullptr;
}

} // namespace

void tellRolesOfControls() {
    QAccessible::installFactory(interfaceOf); // it takes each once
}

} // namespace orv
