#include "SessionFixture.h"
#include "TermEngine/Base64.h"
#include "TermEngine/KittyClipboard.h"

#include <gtest/gtest.h>

namespace term {

TEST(Clipboard, ObeysThePolicyOfTheOptions) {
    using enum KittyClipboardPolicy;
    struct Case {
        KittyClipboardPolicy policy;
        Calls write;
        Calls read;
        std::string answer;
    };
    for (const Case& test : std::vector<Case>{
             {deny, {}, {}, ""},
             {writeOnly, {"copy c hi"}, {}, ""},
             {ask, {"copy c hi"}, {"read c"}, osc("52;c;eW8=")},
             {allow, {"copy c hi"}, {"read c"}, osc("52;c;eW8=")}}) {
        Session session({.kittyClipboardPolicy = test.policy});
        session.host.content = "yo";
        const int policy = static_cast<int>(test.policy);
        EXPECT_EQ(session.calls(osc("52;c;aGk=")), test.write) << policy;
        EXPECT_EQ(session.calls(osc("52;c;?")), test.read) << policy;
        EXPECT_EQ(session.host.takeReplies(), test.answer) << policy;
        // The other protocol: what is refused at once is not asked for.
        session.host.data = {{"text/plain", {'y', 'o'}}};
        const std::string read = session.ask(osc("5522;type=read:id=7;" + encodeBase64("text/plain")));
        const bool isGranted = test.policy == allow;
        EXPECT_EQ(
            read, isGranted ? osc("5522;type=read:status=OK:id=7") +
                                  osc("5522;type=read:status=DATA:id=7:mime=dGV4dC9wbGFpbg==;eW8=") +
                                  osc("5522;type=read:status=DONE:id=7")
                            : osc("5522;type=read:status=EPERM:id=7"))
            << policy;
        EXPECT_EQ(session.host.requests.size(), test.policy == ask ? 1U : 0U) << policy;
    }
}

TEST(Clipboard, IsAnsweredLaterInTheOrderOfTheQuestions) {
    Session session;
    session.host.answersLater = true;
    EXPECT_EQ(session.ask(osc("52;c;?") + "\x1B]52;p;?\a"), "");
    session.terminal.answerClipboardRead("one");
    EXPECT_EQ(session.host.takeReplies(), osc("52;c;b25l"));
    session.terminal.answerClipboardRead({});
    session.terminal.answerClipboardRead("nobody asked");
    EXPECT_EQ(session.host.takeReplies(), "");
    session.host.calls.clear();
    for (int count = 0; count < 1000; ++count) {
        session.terminal.feed(osc("52;c;?"));
    }
    EXPECT_EQ(session.host.calls.size(), 16U) << "questions are bounded: each is asked in two ways";
    session.terminal.feed("\x1B"
                          "c");
    session.terminal.answerClipboardRead("after a reset");
    EXPECT_EQ(session.host.takeReplies(), "");
}

TEST(Clipboard, SpeaksKittysProtocol) {
    const std::string read = osc("5522;type=read:id=1;" + encodeBase64("text/plain"));
    const std::string write =
        osc("5522;type=write:id=2") + osc("5522;type=wdata:mime=dGV4dC9wbGFpbg==;aGk=") + osc("5522;type=wdata");
    const std::string data = osc("5522;type=read:status=OK:id=1") +
                             osc("5522;type=read:status=DATA:id=1:mime=dGV4dC9wbGFpbg==;eW8=") +
                             osc("5522;type=read:status=DONE:id=1");
    struct Case {
        const char* label;
        std::function<void(ClipboardHost&)> prepare;
        std::string bytes;
        std::string expected;
    };
    using Host = ClipboardHost;
    const auto granted = [](Host& host) { host.permission = ClipboardPermission::granted; };
    for (const Case& test : std::vector<Case>{
             {"granted", [&](Host& host) { granted(host); }, read, data},
             {"denied", [](Host&) {}, read, osc("5522;type=read:status=EPERM:id=1")},
             {"trusted", [](Host& host) { host.trusts = true; }, read, data},
             {"the host has nothing",
              [&](Host& host) {
                  granted(host);
                  host.data = {};
              },
              read, osc("5522;type=read:status=EPERM:id=1")},
             {"what types there are needs no permission", [](Host&) {}, osc("5522;type=read;Lg=="),
              osc("5522;type=read:status=OK") + osc("5522;type=read:status=DATA:mime=Lg==;dGV4dC9wbGFpbg==") +
                  osc("5522;type=read:status=DONE")},
             {"no primary", [&](Host& host) { granted(host); }, osc("5522;type=read:loc=primary;Lg=="),
              osc("5522;type=read:status=ENOSYS")},
             {"no reading", [](Host& host) { host.capabilities.reads = false; }, read,
              osc("5522;type=read:status=ENOSYS:id=1")},
             {"no writing", [](Host& host) { host.capabilities.writes = false; }, write,
              osc("5522;type=write:status=ENOSYS:id=2")},
             {"written", [&](Host& host) { granted(host); }, write, osc("5522;type=write:status=DONE:id=2")},
             {"not written",
              [&](Host& host) {
                  granted(host);
                  host.written = KittyClipboardStatus::failed;
              },
              write, osc("5522;type=write:status=EIO:id=2")},
             {"a write cut off by a reset", [&](Host& host) { granted(host); },
              osc("5522;type=write:id=2") +
                  "\x1B"
                  "c" +
                  osc("5522;type=wdata"),
              ""},
             {"answered as asked", [](Host&) {}, "\x1B]5522;type=read;Lg==\a",
              "\x1B]5522;type=read:status=OK\a\x1B]5522;type=read:status=DATA:mime=Lg==;dGV4dC9wbGFpbg==\a"
              "\x1B]5522;type=read:status=DONE\a"}}) {
        Session session;
        session.host.data = {{"text/plain", {'y', 'o'}}};
        test.prepare(session.host);
        EXPECT_EQ(session.ask(test.bytes), test.expected) << test.label;
    }
    // Later, in any order; one write waits at a time.
    Session session;
    session.host.data = {{"text/plain", {'y', 'o'}}};
    session.host.permission = ClipboardPermission::later;
    EXPECT_EQ(session.ask(read + write), "");
    EXPECT_EQ(session.ask(write), osc("5522;type=write:status=EBUSY:id=2"));
    ASSERT_EQ(session.host.requests.size(), 2U);
    session.terminal.resolveKittyClipboardPermission(session.host.requests[1].number, ClipboardPermission::granted);
    EXPECT_EQ(session.host.takeReplies(), osc("5522;type=write:status=DONE:id=2"));
    session.terminal.resolveKittyClipboardPermission(session.host.requests[1].number, ClipboardPermission::granted);
    session.terminal.resolveKittyClipboardPermission(session.host.requests[0].number, ClipboardPermission::denied);
    EXPECT_EQ(session.host.takeReplies(), osc("5522;type=read:status=EPERM:id=1"));
    for (int count = 0; count < 20; ++count) {
        session.terminal.feed(read);
    }
    EXPECT_EQ(session.host.requests.size(), 10U) << "eight wait";
}

TEST(KittyClipboard, SpeaksTheProtocol) {
    using Replies = std::vector<std::string>;
    const std::string text = encodeBase64("text/plain");
    KittyClipboard clipboard({.kittyClipboardMaximumRepresentations = 2, .kittyClipboardMaximumAliases = 2});
    auto outcome = clipboard.handle(
        "type=read:id=a\x07"
        "b:loc=primary;" +
        encodeBase64(". text/plain image/png"));
    ASSERT_TRUE(outcome.read);
    EXPECT_EQ(
        *outcome.read, (KittyClipboardRead{
                           .id = "ab",
                           .location = ClipboardLocation::primary,
                           .wantsTypes = true,
                           .mimeTypes = {"text/plain", "image/png"}}));
    EXPECT_EQ(
        KittyClipboard::answer(*outcome.read, {"text/plain", "x/y"}, {{"text/plain", {'h', 'i'}}}),
        (Replies{
            "5522;type=read:status=OK:id=ab", "5522;type=read:status=DATA:id=ab:mime=Lg==;dGV4dC9wbGFpbiB4L3k=",
            "5522;type=read:status=DATA:id=ab:mime=" + text + ";aGk=", "5522;type=read:status=DONE:id=ab"}));
    EXPECT_EQ(KittyClipboard::answer({}, {}, {{"a", std::vector<uint8_t>(10'000)}}).size(), 5U) << "in pieces of 4 KiB";
    EXPECT_EQ(clipboard.handle("type=read;").replies, (Replies{"5522;type=read:status=EINVAL"}));
    EXPECT_EQ(
        KittyClipboard::pasteEvent(ClipboardLocation::primary, {"a"}),
        (Replies{
            "5522;type=read:status=OK:loc=primary",
            "5522;type=read:status=DATA:mime=Lg==:loc=primary;YQ==", "5522;type=read:status=DONE:loc=primary"}));

    const auto write = [&](const std::vector<std::string>& pieces) {
        KittyClipboard::Outcome last;
        for (const std::string& piece : pieces) {
            last = clipboard.handle(piece);
        }
        return last;
    };
    outcome = write(
        {"type=write:id=7", "type=wdata:mime=" + text + ";aGVs", "type=wdata:mime=" + text + ";bG8=",
         "type=walias:mime=" + text + ";" + encodeBase64("text/html STRING"), "type=wdata"});
    ASSERT_TRUE(outcome.write);
    EXPECT_EQ(
        *outcome.write, (KittyClipboardWrite{
                            .id = "7",
                            .data = {{"text/plain", {'h', 'e', 'l', 'l', 'o'}}},
                            .aliases = {{"text/html", "text/plain"}, {"STRING", "text/plain"}}}));
    EXPECT_EQ(KittyClipboard::answer(*outcome.write, KittyClipboardStatus::done), "5522;type=write:status=DONE:id=7");

    struct Row {
        const char* label;
        std::vector<std::string> pieces;
        Replies expected;
    };
    const std::string big = encodeBase64(std::string(3000, 'x'));
    for (const Row& row :
         {Row{"no base64", {"type=write", "type=wdata:mime=YQ==;!"}, {"5522;type=write:status=EINVAL"}},
          Row{"too many types",
              {"type=write", "type=wdata:mime=YQ==;YQ==", "type=wdata:mime=Yg==;YQ==", "type=wdata:mime=Yw==;YQ=="},
              {"5522;type=write:status=EIO"}},
          Row{"too many aliases",
              {"type=write", "type=walias:mime=YQ==;" + encodeBase64("a b c")},
              {"5522;type=write:status=EIO"}},
          Row{"a type twice",
              {"type=write", "type=wdata:mime=YQ==;YQ==", "type=wdata:mime=Yg==;YQ==", "type=wdata:mime=YQ==;YQ=="},
              {"5522;type=write:status=EINVAL"}},
          Row{"once only", {"type=write", "type=wdata:mime=YQ==;!", "type=wdata:mime=YQ==;!", "type=wdata"}, {}},
          Row{"without a beginning", {"type=wdata:mime=YQ==;YQ=="}, {}}, Row{"unknown", {"type=other;"}, {}}}) {
        clipboard.reset();
        EXPECT_EQ(write(row.pieces).replies, row.expected) << row.label;
    }
    KittyClipboard small({.kittyClipboardWriteLimitBytes = 1}); // 4096
    small.handle("type=write");
    EXPECT_TRUE(small.handle("type=wdata:mime=YQ==;" + big).replies.empty());
    EXPECT_EQ(small.handle("type=wdata:mime=Yg==;" + big).replies, (Replies{"5522;type=write:status=EIO"}));
    KittyClipboard closed({.kittyClipboardPolicy = KittyClipboardPolicy::deny});
    EXPECT_EQ(closed.handle("type=read;Lg==").replies, (Replies{"5522;type=read:status=EPERM"}));
    EXPECT_EQ(closed.handle("type=write").replies, (Replies{"5522;type=write:status=EPERM"}));
    KittyClipboard half({.kittyClipboardPolicy = KittyClipboardPolicy::writeOnly});
    EXPECT_EQ(half.handle("type=read;Lg==").replies, (Replies{"5522;type=read:status=EPERM"}));
    half.handle("type=write");
    EXPECT_FALSE(half.handle("type=wdata").write->needsPermission);
}

} // namespace term
