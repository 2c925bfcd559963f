#include "../../OrvLauncher/Graphics.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

namespace orv {

using namespace Qt::StringLiterals;

TEST(Graphics, KnowsADeviceThatDraws) {
    struct Case {
        const char* label;
        QString device;
        bool expected;
    };
    const Case cases[] = {
        {"no graphics at all", u"tty0"_s, false},
        {"a render node", u"dri/renderD129"_s, true},
        {"a display without one", u"dri/card0"_s, false},
        {"NVIDIA's driver", u"nvidiactl"_s, true},
        {"WSL's", u"dxg"_s, true},
        {"Arm's", u"mali0"_s, true},
    };
    for (const Case& c : cases) {
        test::TemporaryTree devices;
        devices.add(c.device, "");
        EXPECT_EQ(hasGraphicsDevice(devices.path(QString())), c.expected) << c.label;
    }
    EXPECT_FALSE(hasGraphicsDevice(u"/no/such/folder"_s));
}

} // namespace orv
