#include "OrvLauncher/platform/linux/AutostartEntry.h"
#include "OrvLauncher/platform/linux/DesktopNotifier.h"
#include "tests/OrvLauncher/PrivateBus.h"
#include "tests/support/TestSupport.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;

/// A server of notifications that keeps what it gets.
class StandInServer : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    enum class Kind { plain, full, hanging };

    StandInServer(const PrivateBus& bus, Kind kind)
        : m_kind(kind),
          m_name(u"stand-in-%1"_s.arg(++s_count)),
          m_bus(QDBusConnection::connectToBus(bus.address, m_name)) {
        EXPECT_TRUE(m_bus.registerObject(
            u"/org/freedesktop/Notifications"_s, this,
            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
        EXPECT_TRUE(m_bus.registerService(u"org.freedesktop.Notifications"_s));
    }
    ~StandInServer() override { QDBusConnection::disconnectFromBus(m_name); }

    QStringList shown; ///< "title / body / actions"

public Q_SLOTS:
    QStringList GetCapabilities() {
        if (m_kind == Kind::hanging) {
            setDelayedReply(true); // for ever
        }
        return m_kind == Kind::full ? QStringList{u"body"_s, u"body-markup"_s, u"actions"_s} : QStringList{u"body"_s};
    }
    QString GetServerInformation(QString& vendor, QString& version, QString& protocol) {
        vendor = version = protocol = u"1"_s;
        return u"stand-in"_s;
    }
    uint Notify(
        const QString& application, uint replaced, const QString&, const QString& title, const QString& body,
        const QStringList& actions, const QVariantMap& hints, int) {
        EXPECT_EQ(application, u"OrvLauncher"_s);
        EXPECT_EQ(hints[u"desktop-entry"_s], u"orvlauncher"_s);
        const QString text = QStringList{title, body, actions.join(u'+')}.join(u" / "_s);
        if (replaced != 0) {
            shown[replaced - 1] = text;
            return replaced;
        }
        shown.append(text);
        return static_cast<uint>(shown.size());
    }

Q_SIGNALS:
    void ActivationToken(uint id, const QString& token);
    void ActionInvoked(uint id, const QString& action);
    void NotificationClosed(uint id, uint reason);

private:
    inline static int s_count = 0;
    Kind m_kind;
    QString m_name;
    QDBusConnection m_bus;
};

namespace {

const NotificationRequest ready{
    u"shop is ready"_s, u"Frontend <b> & \u0007co"_s, u"/p/shop"_s, u"http://localhost:80"_s};
const NotificationRequest crashed{
    u"shop stopped"_s, u"boom"_s, u"/p/shop"_s, {}, {NotificationPart::Kind::logs, u"web"_s}};

/// What the notifier says of the system; empty while it has said nothing.
QString statusOf(DesktopNotifier& notifier) {
    QString said;
    notifier.findStatus(Notifying::Ask::userToo, [&said](const NotificationStatus& status) { said = status.text(); });
    EXPECT_TRUE(waitFor([&] { return !said.isEmpty(); }));
    return said;
}

} // namespace

TEST(DesktopNotifier, ShowsWhatTheServerCanShowAndHearsClicks) {
    const PrivateBus bus;
    StandInServer server(bus, StandInServer::Kind::full);
    DesktopNotifier notifier(bus.address);
    QStringList clicks;
    notifier.projectClicked = [&](const QString& id, const NotificationPart& part) {
        clicks.append(id + u" of "_s + part.key + u" by "_s + qEnvironmentVariable("XDG_ACTIVATION_TOKEN"));
    };
    notifier.addressClicked = [&](const QUrl& url) { clicks.append(url.toString()); };
    notifier.post(ready);
    notifier.post(crashed);
    ASSERT_TRUE(waitFor([&] { return server.shown.size() == 2; }));
    EXPECT_EQ(
        server.shown,
        (QStringList{
            u"shop is ready / Frontend &lt;b&gt; &amp;  co / default+Open OrvLauncher+open-browser+Open in browser"_s,
            u"shop stopped / boom / default+Open OrvLauncher"_s}));
    EXPECT_EQ(statusOf(notifier), u"Shown by stand-in"_s);
    Q_EMIT server.ActionInvoked(1, u"open-browser"_s);
    Q_EMIT server.ActionInvoked(2, u"open-browser"_s);
    Q_EMIT server.ActionInvoked(7, u"default"_s);
    Q_EMIT server.NotificationClosed(1, 2);
    Q_EMIT server.ActionInvoked(1, u"open-browser"_s);
    Q_EMIT server.ActivationToken(2, u"front"_s);
    Q_EMIT server.ActionInvoked(2, u"default"_s);
    ASSERT_TRUE(waitFor([&] { return clicks.size() == 2; }));
    EXPECT_EQ(clicks, (QStringList{u"http://localhost:80"_s, u"/p/shop of web by front"_s}));
    EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN")) << "no service gets it";
}

TEST(DesktopNotifier, CorrectsInPlaceWhatIsStillShown) {
    const PrivateBus bus;
    StandInServer server(bus, StandInServer::Kind::plain);
    DesktopNotifier notifier(bus.address);
    NotificationRequest first = ready;
    first.subject = u"web"_s;
    NotificationRequest second = first;
    second.body = u"corrected"_s;
    second.replaces = true;
    EXPECT_EQ(statusOf(notifier), u"Shown by stand-in"_s);
    notifier.post(first);
    notifier.post(second); // before it is known as what the first one is shown
    notifier.post(crashed);
    const QStringList expected{u"shop is ready / corrected / "_s, u"shop stopped / boom / "_s};
    EXPECT_TRUE(waitFor([&] { return server.shown == expected; })) << server.shown.join(u'\n').toStdString();
    second.body = u"again"_s;
    notifier.post(second);
    EXPECT_TRUE(waitFor([&] { return server.shown.value(0).contains(u"again"); }));
    Q_EMIT server.NotificationClosed(1, 2);
    second.body = u"once more"_s;
    notifier.post(first); // until it is answered, the end of the other one has been heard of
    notifier.post(second);
    EXPECT_TRUE(waitFor([&] { return server.shown.value(2).contains(u"once more"); }));
    EXPECT_TRUE(server.shown.value(0).contains(u"again")) << "it was closed";
    EXPECT_EQ(server.shown.size(), 3);
}

TEST(DesktopNotifier, FollowsTheServerThatIsThere) {
    const PrivateBus bus;
    DesktopNotifier notifier(bus.address);
    notifier.post(crashed);
    EXPECT_EQ(statusOf(notifier), u"Nothing on this desktop shows notifications"_s);
    {
        StandInServer plain(bus, StandInServer::Kind::plain);
        notifier.post(ready);
        EXPECT_TRUE(waitFor([&] { return !plain.shown.isEmpty(); }));
        EXPECT_EQ(plain.shown, QStringList{u"shop is ready / Frontend <b> &  co / "_s}) << "what was lost stays lost";
    }
    notifier.post(crashed); // to nobody
    EXPECT_EQ(statusOf(notifier), u"Nothing on this desktop shows notifications"_s);
    StandInServer full(bus, StandInServer::Kind::full);
    notifier.post(ready);
    EXPECT_TRUE(waitFor([&] { return full.shown.value(0).contains(u"&lt;b&gt;"); }));
}

TEST(DesktopNotifier, WaitsForNobody) {
    const PrivateBus bus;
    StandInServer server(bus, StandInServer::Kind::hanging);
    DesktopNotifier notifier(bus.address, std::chrono::milliseconds(200));
    for (int i = 0; i < 1000; ++i) {
        notifier.post(ready);
    }
    EXPECT_EQ(statusOf(notifier), u"Nothing on this desktop shows notifications"_s);
    EXPECT_TRUE(server.shown.isEmpty());
    DesktopNotifier withoutBus(u"unix:path=/nowhere"_s);
    EXPECT_EQ(statusOf(withoutBus), u"Nothing on this desktop shows notifications"_s);
    const QString text = DesktopNotifier::bodyText(QString(1000, u'<'), true);
    EXPECT_EQ(text, QString(u"&lt;"_s).repeated(600) + u'…');
}

TEST(AutostartEntry, IsReadByTheDesktopAsItWasMeant) {
    TemporaryTree tree;
    for (const QString& name : {u"plain"_s, u"with space"_s, u"do$lar `tick` \"quote\" back\\slash"_s, u"übel"_s}) {
        const QString executable =
            tree.add(u"apps/"_s + name + u"/orvlauncher"_s, "#!/bin/sh\necho \"$@\" >\"$(dirname \"$0\")/ran\"\n");
        QFile::setPermissions(executable, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        const QString config = tree.path(u"config/"_s + name);
        AutostartEntry entry(config, executable);
        EXPECT_FALSE(entry.isEnabled());
        ASSERT_TRUE(entry.setEnabled(true));
        EXPECT_TRUE(entry.isEnabled());
        EXPECT_EQ(entry.filePath(), config + u"/autostart/orvlauncher.desktop"_s);
        EXPECT_EQ(QProcess::execute(u"gio"_s, {u"launch"_s, entry.filePath()}), 0) << name.toStdString();
        EXPECT_TRUE(waitFor([&] { return readFile(tree.path(u"apps/"_s + name + u"/ran"_s)) == "-OrvInTray\n"; }))
            << readFile(entry.filePath()).constData();
        ASSERT_TRUE(entry.setEnabled(false));
        EXPECT_FALSE(QFile::exists(entry.filePath()));
        ASSERT_TRUE(entry.setEnabled(false));
    }
}

TEST(AutostartEntry, KnowsWhatOthersHaveTurnedOffAndWhatCannotBe) {
    TemporaryTree tree;
    const struct {
        QByteArray entry;
        bool isEnabled;
    } cases[] = {
        {"[Desktop Entry]\nExec=/bin/sh --other\n", true},
        {"[Desktop Entry]\nExec=\"/bin/sh\" %U\n", true},
        {"[Desktop Entry]\nExec=\"/moved/away/orvlauncher\"\n", false},
        {"[Desktop Entry]\nExec=no-such-program-anywhere\n", false},
        {"[Desktop Entry]\nExec=sh\nHidden=true\n", false},
        {"[Desktop Entry]\nExec = sh\nX-GNOME-Autostart-enabled=false\n", false},
        {"[Desktop Entry]\nExec=sh\n[Desktop Action x]\nHidden=true\n", true},
        {"", false},
    };
    for (const auto& [content, isEnabled] : cases) {
        tree.add(u"autostart/orvlauncher.desktop"_s, content);
        EXPECT_EQ(AutostartEntry(tree.path(), u"/bin/true"_s).isEnabled(), isEnabled) << content.constData();
    }
    EXPECT_EQ(AutostartEntry::execValue(u"/opt/100%u"_s), u"\"/opt/100%%u\""_s);
    EXPECT_FALSE(AutostartEntry(tree.path(), u"/opt/a=b/orvlauncher"_s).setEnabled(true));
    EXPECT_FALSE(AutostartEntry(u"/proc/self"_s, u"/bin/true"_s).setEnabled(true));
}

#include "PlatformTests.moc"
