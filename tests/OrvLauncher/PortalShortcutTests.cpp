#include "OrvLauncher/platform/linux/PortalEntry.h"
#include "OrvLauncher/platform/linux/PortalShortcut.h"
#include "tests/OrvLauncher/PrivateBus.h"
#include "tests/support/TestSupport.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>

#include <optional>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

const QString portal = u"org.freedesktop.portal.Desktop"_s;
const QString root = u"/org/freedesktop/portal/desktop"_s;

/// A desktop that gives keys, with a user who answers it.
class StandInPortal : public QDBusVirtualObject {
public:
    struct Manner {
        bool knowsShortcuts = true;
        std::optional<uint> createAnswer = 0; ///< the user's answer; none: it says nothing
        std::optional<uint> bindAnswer = 0;
        bool bindsNothing = false;
    };

    StandInPortal(const PrivateBus& bus, Manner manner)
        : m_manner(manner), m_bus(QDBusConnection::connectToBus(bus.address, u"stand-in portal"_s)) {
        EXPECT_TRUE(m_bus.registerVirtualObject(root, this, QDBusConnection::SubPath));
        EXPECT_TRUE(m_bus.registerService(portal));
    }
    ~StandInPortal() override { QDBusConnection::disconnectFromBus(u"stand-in portal"_s); }

    QStringList asked;
    QString session;

    void tell(const QString& path, const QString& interface, const QString& name, const QVariantList& words) {
        QDBusMessage signal = QDBusMessage::createSignal(path, interface, name);
        signal.setArguments(words);
        m_bus.send(signal);
    }

    void press(const QString& its, const QString& id, const QVariantMap& options = {}) {
        tell(
            root, u"org.freedesktop.portal.GlobalShortcuts"_s, u"Activated"_s,
            {QVariant::fromValue(QDBusObjectPath(its)), id, qulonglong(1), options});
    }

    void change(const QString& trigger) {
        const QList<PortalEntry> now{{u"panel"_s, {{u"trigger_description"_s, trigger}}}};
        tell(
            root, u"org.freedesktop.portal.GlobalShortcuts"_s, u"ShortcutsChanged"_s,
            {QVariant::fromValue(QDBusObjectPath(session)), QVariant::fromValue(now)});
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() != u"org.freedesktop.portal.GlobalShortcuts" || !m_manner.knowsShortcuts) {
            return false;
        }
        const QString sender = message.service().remove(u':').replace(u'.', u'_');
        const auto options = qdbus_cast<QVariantMap>(message.arguments().constLast());
        const QString request = root + u"/request/"_s + sender + u'/' + options[u"handle_token"_s].toString();
        connection.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        if (message.member() == u"CreateSession") {
            session = root + u"/session/"_s + sender + u'/' + options[u"session_handle_token"_s].toString();
            answer(request, m_manner.createAnswer, {{u"session_handle"_s, session}});
        } else {
            const auto wanted = qdbus_cast<QList<PortalEntry>>(message.arguments().value(1));
            EXPECT_EQ(message.arguments().value(0).value<QDBusObjectPath>().path(), session);
            for (const PortalEntry& entry : wanted) {
                asked.append(QStringList{
                    entry.id, entry.values[u"description"_s].toString(),
                    entry.values[u"preferred_trigger"_s].toString()}
                                 .join(u" / "_s));
            }
            QList<PortalEntry> bound;
            if (!m_manner.bindsNothing) {
                bound.append({u"panel"_s, {{u"trigger_description"_s, u"Press Super+L"_s}}});
            }
            answer(request, m_manner.bindAnswer, {{u"shortcuts"_s, QVariant::fromValue(bound)}});
        }
        return true;
    }
    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }

private:
    void answer(const QString& request, std::optional<uint> code, const QVariantMap& results) {
        if (code) {
            tell(request, u"org.freedesktop.portal.Request"_s, u"Response"_s, {*code, results});
        }
    }

    const Manner m_manner;
    QDBusConnection m_bus;
};

struct Client {
    explicit Client(const PrivateBus& bus)
        : shortcut(
              {.id = u"panel"_s, .description = u"Open it"_s, .trigger = u"CTRL+l"_s},
              {.pressed = [this](const QString& activation) { presses.append(activation); },
               .stateChanged = [this] { ++changes; }},
              bus.address) {}
    [[nodiscard]] bool becomes(PortalShortcut::State state) const {
        return waitFor([&] { return shortcut.state() == state; });
    }
    QStringList presses;
    int changes = 0;
    PortalShortcut shortcut;
};

using State = PortalShortcut::State;

} // namespace

TEST(PortalShortcut, IsGivenByTheDesktopAndPressedThere) {
    const PrivateBus bus;
    StandInPortal desktop(bus, {});
    Client client(bus);
    EXPECT_EQ(client.shortcut.state(), State::asking);
    ASSERT_TRUE(client.becomes(State::bound));
    EXPECT_EQ(desktop.asked, QStringList{u"panel / Open it / CTRL+l"_s});
    EXPECT_EQ(client.shortcut.trigger(), u"Press Super+L"_s);
    EXPECT_EQ(client.changes, 1);
    desktop.press(root + u"/session/of/another"_s, u"panel"_s);
    desktop.press(desktop.session, u"another"_s);
    desktop.press(desktop.session, u"panel"_s);
    desktop.press(desktop.session, u"panel"_s, {{u"activation_token"_s, u"front"_s}});
    ASSERT_TRUE(waitFor([&] { return client.presses.size() == 2; }));
    EXPECT_EQ(client.presses, (QStringList{QString(), u"front"_s}));
    desktop.change(u"Press Super+P"_s);
    EXPECT_TRUE(waitFor([&] { return client.shortcut.trigger() == u"Press Super+P"; }));
    EXPECT_EQ(client.shortcut.state(), State::bound);
    desktop.tell(desktop.session, u"org.freedesktop.portal.Session"_s, u"Closed"_s, {QVariantMap()});
    EXPECT_TRUE(client.becomes(State::declined)) << "taken back";
}

TEST(PortalShortcut, SaysWhyThereIsNone) {
    const struct {
        const char* label;
        StandInPortal::Manner manner;
        State state;
    } cases[] = {
        {"a desktop without shortcuts", {.knowsShortcuts = false}, State::unsupported},
        {"no session", {.createAnswer = 2}, State::declined},
        {"the user says no", {.bindAnswer = 1}, State::declined},
        {"the user leaves it without a key", {.bindsNothing = true}, State::declined},
    };
    for (const auto& [label, manner, state] : cases) {
        const PrivateBus bus;
        const StandInPortal desktop(bus, manner);
        const Client client(bus);
        EXPECT_TRUE(client.becomes(state)) << label;
        EXPECT_EQ(client.shortcut.trigger(), QString()) << label;
    }
    const PrivateBus bus;
    const Client withoutPortal(bus);
    EXPECT_TRUE(withoutPortal.becomes(State::unsupported));
    const StandInPortal silent(bus, {.bindAnswer = {}});
    const Client waiting(bus);
    EXPECT_TRUE(waitFor([&] { return !silent.asked.isEmpty(); }));
    EXPECT_EQ(waiting.shortcut.state(), State::asking) << "the user is asked";
    EXPECT_EQ(waiting.changes, 0);
}

} // namespace orv::test
