#include "Cli.h"

using namespace Qt::StringLiterals;

namespace orv {

Command toggleCommand() {
    // Without more words it never comes here: the window's side hands it to the application that runs.
    const auto refuse = [](Invocation& call) {
        return QtFuture::makeReadyFuture(call.usageError(u"toggle takes no options."_s));
    };
    return {
        u"toggle"_s,
        u"shows or hides the quick panel"_s,
        u"For a key of the desktop's own, where applications can't have one of theirs. The panel belongs to the "
        u"application\n"
        "that runs; when none does, it is started as by 'orvlauncher' alone, with its window."_s,
        {{{}, {}, 0, 0, u"shows the quick panel, or hides it"_s, {}, refuse}},
        {{u"orvlauncher toggle"_s, u"to be bound to a key in the settings of the desktop"_s}}};
}

} // namespace orv
