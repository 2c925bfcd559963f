#include "OrvCore/Devices.h"
#include "tests/support/TestSupport.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

namespace {

/// "iOS 17.2/iPhone 15/A*", the star for one that runs.
QString shown(const QList<SimulatorDevice>& devices) {
    QStringList parts;
    for (const SimulatorDevice& device : devices) {
        parts << device.runtime + u'/' + device.name + u'/' + device.udid + (device.isBooted ? u"*"_s : QString());
    }
    return parts.join(u", "_s);
}

QByteArray runtime(const QByteArray& name, const QByteArray& devices) {
    return "\"com.apple.CoreSimulator.SimRuntime." + name + "\":[" + devices + "]";
}

QByteArray simctl(const QByteArray& runtimes) {
    return R"({"devices":{)" + runtimes + "}}";
}

} // namespace

TEST(DeviceParsers, TakesFlutterDevicesWithAnIdAndAName) {
    const struct {
        const char* label;
        QByteArray listing;
        QString devices;
    } cases[] = {
        {"two", R"([{"id":"a","name":"A","x":1},{"id":"b","name":"B"}])", u"a=A b=B"_s},
        {"no name", R"([{"id":"a"}])", u""_s},
        {"other entries", R"([7,null,"x",[],{"id":5,"name":"A"},{"id":"b","name":"B"}])", u"b=B"_s},
        {"an object", R"({"id":"a","name":"A"})", u""_s},
        {"no JSON", "flutter: command not found", u""_s},
    };
    for (const auto& [label, listing, expected] : cases) {
        QStringList devices;
        for (const FlutterDevice& device : DeviceParsers::flutterDevices(listing)) {
            devices.append(device.id + u'=' + device.name);
        }
        EXPECT_EQ(devices.join(u' '), expected) << label;
    }
}

TEST(DeviceParsers, TakesTheSimulatorsOfIos) {
    const QByteArray phone = R"({"udid":"A","name":"iPhone 15","state":"Shutdown"})";
    const struct {
        const char* label;
        QByteArray json;
        QString devices;
    } cases[] = {
        {"other platforms", simctl(runtime("watchOS-10-0", phone) + "," + runtime("tvOS-17-0", phone)), u""_s},
        {"a runtime without dots before it", simctl("\"iOS-18-0\":[" + phone + "]"), u"iOS 18.0/iPhone 15/A"_s},
        {"its platform not at the start", simctl("\"x.xiOS-18-0\":[" + phone + "]"), u""_s},
        {"what is not available or incomplete",
         simctl(runtime(
             "iOS-17-2", R"({"udid":"A","name":"A","isAvailable":false},{"udid":"B","name":"B","isAvailable":true},)"
                         R"({"udid":"C","name":7},{"name":"D"},5,{"udid":"E","name":"E","state":"booted"},)"
                         R"({"udid":"F","name":"F","state":"Booted"})")),
         u"iOS 17.2/B/B, iOS 17.2/E/E, iOS 17.2/F/F*"_s},
        {"in the order of versions and numbers",
         simctl(
             runtime("iOS-17-10", phone) + "," +
             runtime(
                 "iOS-17-9", R"({"udid":"C","name":"iPhone 15"},{"udid":"B","name":"iPhone 15"},)"
                             R"({"udid":"D","name":"iPhone 9"})") +
             "," + runtime("iOS-9-3-1", phone)),
         u"iOS 9.3.1/iPhone 15/A, iOS 17.9/iPhone 9/D, iOS 17.9/iPhone 15/B, iOS 17.9/iPhone 15/C, iOS 17.10/iPhone 15/A"_s},
        {"a runtime that is no list", simctl(runtime("iOS-17-2", phone) + R"(,"x.iOS-17-3":{})"), u""_s},
        {"no devices", R"({"runtimes":[]})", u""_s},
        {"an array", "[]", u""_s},
        {"no JSON", "xcrun: error: unable to find utility \"simctl\"", u""_s},
    };
    for (const auto& [label, json, devices] : cases) {
        EXPECT_EQ(shown(DeviceParsers::simulators(json)), devices) << label;
    }
}

TEST(DeviceParsers, GroupsAndShortensForMenus) {
    const auto device = [](const QString& runtime, const QString& name, bool isBooted = false) {
        return SimulatorDevice{name, name, runtime, isBooted};
    };
    const QList<SimulatorDevice> devices{
        device(u"iOS 17.10"_s, u"a"_s), device(u"iOS 17.9"_s, u"b"_s, true), device(u"iOS 17.10"_s, u"c"_s),
        device(u"iOS 17"_s, u"d"_s), device(u"iOS 18.0"_s, u"e"_s)};
    QStringList groups;
    for (const auto& group : DeviceParsers::groupedByRuntime(devices)) {
        groups << group.runtime + u": "_s + shown(group.devices);
    }
    EXPECT_EQ(
        groups.join(u"; "_s), u"iOS 17: iOS 17/d/d; iOS 17.9: iOS 17.9/b/b*; "
                              "iOS 17.10: iOS 17.10/a/a, iOS 17.10/c/c; iOS 18.0: iOS 18.0/e/e"_s);
    EXPECT_EQ(shown(DeviceParsers::shortlist(devices, 3)), u"iOS 17.9/b/b*, iOS 18.0/e/e, iOS 17.10/a/a"_s);
    EXPECT_EQ(DeviceParsers::shortlist(devices, 9).size(), 5);
    EXPECT_TRUE(DeviceParsers::shortlist(devices, -1).isEmpty());
}

TEST(DeviceParsers, TakesAndroidDevicesFromAmongTheNotices) {
    EXPECT_EQ(
        DeviceParsers::avds("INFO    | Storing crashdata in: /tmp\r\n\n  Pixel_7_API_34\t\r\nA|B\nno name\nTV\n"),
        (QStringList{u"Pixel_7_API_34"_s, u"TV"_s}));
    EXPECT_EQ(DeviceParsers::displayName(u"Pixel_7_API_34"_s), u"Pixel 7 API 34"_s);
}

TEST(DeviceParsers, FindsTheAndroidSdkByItsEmulator) {
    test::TemporaryTree tree;
    for (const QString& folder : {u"one"_s, u"two"_s, u"mac/Library/Android/sdk"_s, u"linux/Android/Sdk"_s}) {
        tree.add(folder + u"/emulator/emulator"_s);
    }
    tree.add(u"folder/emulator/emulator/"_s);
    const struct {
        const char* label;
        QString home, first, second, expected;
    } cases[] = {
        {"the first variable wins", u"mac"_s, u"one"_s, u"two"_s, u"one"_s},
        {"the second one", u"mac"_s, u"nowhere"_s, u"two"_s, u"two"_s},
        {"an emulator that is a folder", u"mac"_s, u"folder"_s, u""_s, u"mac/Library/Android/sdk"_s},
        {"the home folder", u"linux"_s, u""_s, u""_s, u"linux/Android/Sdk"_s},
        {"nowhere", u"nowhere"_s, u""_s, u""_s, u""_s},
    };
    for (const auto& [label, home, first, second, expected] : cases) {
        QMap<QString, QString> environment{{u"ANDROID_HOME"_s, first.isEmpty() ? first : tree.path(first)}};
        if (!second.isEmpty()) {
            environment.insert(u"ANDROID_SDK_ROOT"_s, tree.path(second));
        }
        const auto found = DeviceParsers::androidSDK(environment, tree.path(home));
        EXPECT_EQ(found.value_or(tree.path()), tree.path(expected)) << label;
    }
}
