#include "OrvUI/QuitGuard.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace orv;

TEST(QuitGuard, SaysWhatWouldEnd) {
    struct Case {
        RunningWork work;
        QString expected;
    };
    const Case cases[] = {
        {{}, QString()},
        {{.services = 1}, u"1 service still running"_s},
        {{.services = 2, .agents = 1}, u"2 services still running and 1 AI agent is still working"_s},
        {{.isMakingProject = true}, u"A project is still being added"_s},
        {{.isProgramInTerminal = true}, u"A program is still running in a terminal"_s},
        {{.services = 10, .isInstalling = true}, u"10 services still running and an install is still running"_s},
        {{.services = 1, .isProgramInTerminal = true, .agents = 3},
         u"1 service still running and a program is still running in a terminal and 3 AI agents are still working"_s},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.work.message(), c.expected);
        EXPECT_EQ(c.work.isAny(), !c.expected.isEmpty()) << c.expected.toStdString();
    }
}
