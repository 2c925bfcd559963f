#include "TermEngine/Base64.h"
#include "TermEngine/ScreenSnapshot.h"
#include "TerminalFixture.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace term {
namespace {

using namespace std::chrono_literals;

/// A host with clipboards.
class ClipboardHost : public RecordingHost {
public:
    std::optional<std::string> content;
    bool answersLater = false;
    KittyClipboardCapabilities capabilities{};
    std::optional<std::vector<ClipboardData>> data{};
    KittyClipboardStatus written = KittyClipboardStatus::done;
    ClipboardPermission permission = ClipboardPermission::denied;
    std::optional<bool> trusts{};
    std::vector<KittyClipboardRequest> requests;
    std::optional<PasteControlBytes> pasteControls{};
    bool announces = true;

    std::optional<std::string> clipboardRead(Terminal&, std::string_view selections) override {
        calls.push_back("read " + std::string(selections));
        return content;
    }
    bool clipboardReadRequest(Terminal&, std::string_view selections) override {
        calls.push_back("request " + std::string(selections));
        return answersLater;
    }
    KittyClipboardCapabilities kittyClipboardCapabilities(Terminal&) override { return capabilities; }
    std::vector<std::string> kittyClipboardAvailableMimeTypes(Terminal&, ClipboardLocation) override {
        return {"text/plain"};
    }
    std::optional<std::vector<ClipboardData>> kittyClipboardRead(Terminal&, const KittyClipboardRead&) override {
        return data;
    }
    KittyClipboardStatus kittyClipboardWrite(Terminal&, KittyClipboardWrite write) override {
        calls.push_back("write " + std::string(write.data.at(0).bytes.begin(), write.data.at(0).bytes.end()));
        return written;
    }
    ClipboardPermission kittyClipboardRequestPermission(Terminal&, const KittyClipboardRequest& request) override {
        requests.push_back(request);
        return permission;
    }
    bool kittyClipboardSendPasteEvent(Terminal&, ClipboardLocation) override { return announces; }
    std::optional<bool> isProcessTrusted(Terminal&) override { return trusts; }
    std::optional<PasteControlBytes> terminalControlBytesForPaste(Terminal&) override { return pasteControls; }
    void selectionChanged(Terminal& source) override {
        calls.push_back("selection " + source.selection().text(source.buffer()));
    }
    void programStatusChanged(Terminal&, const std::vector<std::string>& records) override {
        std::string all = "status";
        for (const std::string& record : records) {
            all += " [" + record + "]";
        }
        calls.push_back(all);
    }
};

std::string osc(const std::string& body) {
    return "\x1B]" + body + "\x1B\\";
}

struct Session {
    ClipboardHost host;
    Terminal terminal;
    explicit Session(TerminalOptions options = {}) : terminal(host, std::move(options)) {}
    std::string ask(std::string_view bytes) {
        terminal.feed(bytes);
        return host.takeReplies();
    }
    std::vector<std::string> calls(std::string_view bytes) {
        terminal.feed(bytes);
        return std::exchange(host.calls, {});
    }
};

using Calls = std::vector<std::string>;

} // namespace

TEST(OscObservers, SeeEachStringInOrderOnAThreadOfTheirOwn) {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<TerminalOscEvent> seen;
    std::vector<std::thread::id> threads;
    const auto waitFor = [&](std::size_t count) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, 30s, [&] { return seen.size() >= count; });
    };
    Session session;
    const auto payload = [](std::string_view text) { return std::vector<std::uint8_t>(text.begin(), text.end()); };
    session.terminal.feed(osc("2;before"));
    TerminalOscObservation none = session.terminal.oscEvents().observe([](const auto&) { FAIL() << "was cancelled"; });
    none.cancel();
    auto observation = session.terminal.oscEvents().observe([&](const TerminalOscEvent& event) {
        const std::scoped_lock lock(mutex);
        seen.push_back(event);
        threads.push_back(std::this_thread::get_id());
        changed.notify_all();
    });
    session.terminal.feed("\x1B[3;5H" + osc("2;title") + "ab" + osc("99999;?") + osc("7") + osc("bad;x"));
    ASSERT_TRUE(waitFor(3));
    EXPECT_EQ(
        seen,
        (std::vector<TerminalOscEvent>{{2, payload("title"), {4, 2}}, {99999, payload("?"), {6, 2}}, {7, {}, {6, 2}}}));
    for (const auto& thread : threads) {
        EXPECT_NE(thread, std::this_thread::get_id());
    }
    // One that is slow holds nobody up, and what waits for it is bounded.
    std::mutex gate;
    {
        const std::scoped_lock closed(gate);
        auto slow = session.terminal.oscEvents().observe([&](const auto&) { const std::scoped_lock wait(gate); });
        for (int count = 0; count < 1000; ++count) {
            session.terminal.feed(osc("2;" + std::string(4000, 'x')));
        }
        EXPECT_GT(session.terminal.oscEvents().droppedCount(), 600U);
    }
    observation.cancel();
    EXPECT_FALSE(session.terminal.oscEvents().hasObservers());
}

TEST(OscObservers, MayGoAwayFromWithin) {
    std::mutex mutex;
    std::condition_variable changed;
    bool isDone = false;
    ClipboardHost host;
    auto terminal = std::make_unique<Terminal>(host);
    TerminalOscObservation observation;
    std::unique_lock lock(mutex);
    observation = terminal->oscEvents().observe([&](const auto&) {
        const std::scoped_lock wait(mutex);
        observation.cancel();
        terminal.reset();
        isDone = true;
        changed.notify_all();
    });
    terminal->feed(osc("2;a") + osc("2;b"));
    EXPECT_TRUE(changed.wait_for(lock, 30s, [&] { return isDone; }));
    observation.cancel();
}

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

TEST(Input, SendsWhatTheModesMakeOfEvents) {
    struct Case {
        const char* label;
        std::string modes;
        std::function<bool(Terminal&)> act;
        std::string expected;
    };
    const auto key = [](KeyEvent event) { return [event](Terminal& t) { return t.sendKey(event); }; };
    const auto mouse = [](MouseEvent event) { return [event](Terminal& t) { return t.sendMouse(event, 2); }; };
    const auto paste = [](Terminal& t) { return t.paste("a\x1B[201~b#\n"); };
    const auto focus = [](Terminal& t) { return t.sendFocus(FocusChange::gained); };
    const MouseEvent wheel{.button = MouseButton::wheelUp};
    for (const Case& test : std::vector<Case>{
             {"a key", "", key({.key = Key::up}), "\x1B[A"},
             {"cursor keys", "\x1B[?1h", key({.key = Key::up}), "\x1BOA"},
             {"kitty", "\x1B[>1u", key({.key = Key::escape}), "\x1B[27u"},
             {"the delete key", "\x1B[?1037h", key({.key = Key::deleteForward}), "\x7F"},
             {"alt", "", key({.code = 'b', .modifiers = {KeyModifiers::alt}}), "\x1B\x62"},
             {"alt and the eighth bit", "\x1B[?1036;1034h", key({.code = 'b', .modifiers = {KeyModifiers::alt}}),
              "\x1B\x62"},
             {"the eighth bit alone", "\x1B[?1034h\x1B[?1036l", key({.code = 'b', .modifiers = {KeyModifiers::alt}}),
              "\u00E2"},
             {"alt as nothing", "\x1B[?1036l", key({.code = 'b', .modifiers = {KeyModifiers::alt}}), "b"},
             {"a locked keyboard", "\x1B[2h", key({.key = Key::up}), ""},
             {"left in text from the right", "\x1B[2 k\x1B[?1243h", key({.key = Key::left}), "\x1B[C"},
             {"left in text found to be from the right", "\x1B[?2501;1243h\u05D0\u05D1", key({.key = Key::left}),
              "\x1B[C"},
             {"left in text found to be from the left", "\x1B[2 k\x1B[?2501;1243hab", key({.key = Key::left}),
              "\x1B[D"},
             {"left in text from the left", "\x1B[?1243h", key({.key = Key::left}), "\x1B[D"},
             {"no tracking", "", mouse({.button = MouseButton::left}), ""},
             {"tracking", "\x1B[?1000;1006h", mouse({.button = MouseButton::left, .column = 4, .row = 2}),
              "\x1B[<0;5;3M"},
             {"tracking with controls of 8 bits", "\x1B[?1000;1006h\x1B G",
              mouse({.button = MouseButton::left, .column = 4, .row = 2}), "\x9B<0;5;3M"},
             {"tracking in bytes with controls of 8 bits", "\x1B[?1000h\x1B G",
              mouse({.button = MouseButton::left, .column = 4, .row = 2}), "\x9BM %#"},
             {"a wheel", "", mouse(wheel), ""},
             {"a wheel over the alternate screen", "\x1B[?1049h", mouse(wheel), "\x1B[A\x1B[A"},
             {"without alternate scrolling", "\x1B[?1049h\x1B[?1007l", mouse(wheel), ""},
             {"no focus", "", focus, ""},
             {"focus", "\x1B[?1004h", focus, "\x1B[I"},
             {"focus with controls of 8 bits", "\x1B[?1004h\x1B G", focus, "\x9BI"},
             {"a key that repeats", "", key({.key = Key::up, .type = KeyEventType::repeat}), "\x1B[A"},
             {"without auto-repeat", "\x1B[?8l", key({.key = Key::up, .type = KeyEventType::repeat}), ""},
             {"a paste", "", paste, "a [201~b#\r"},
             {"a bracketed paste", "\x1B[?2004h", paste, "\x1B[200~ab#\r\x1B[201~"},
             {"a paste that is announced", "\x1B[?5522h", paste,
              osc("5522;type=read:status=OK") + osc("5522;type=read:status=DATA:mime=Lg==;dGV4dC9wbGFpbg==") +
                  osc("5522;type=read:status=DONE")},
         }) {
        Session session;
        session.terminal.feed(test.modes);
        session.host.replies.clear();
        EXPECT_EQ(test.act(session.terminal), !test.expected.empty()) << test.label;
        EXPECT_EQ(session.host.takeReplies(), test.expected) << test.label;
    }
    Session session({.initialBidiState = {.paragraph = BidiDirection::rightToLeft}, .initialBidiArrowKeySwap = true});
    session.terminal.sendKey({.key = Key::right});
    EXPECT_EQ(session.host.takeReplies(), "\x1B[D") << "from the options";
    session.host.announces = false;
    session.host.pasteControls = PasteControlBytes{.begin = "<", .end = ">", .lineDiscipline = "#"};
    session.terminal.feed("\x1B[?2004;5522h");
    session.terminal.paste("a#b>c");
    EXPECT_EQ(session.host.takeReplies(), "<a bc>");
    session.terminal.feed("\x1B[12l\x1B[?5522l");
    session.terminal.paste("shown");
    session.terminal.feed("\x1B[12h");
    session.terminal.paste("not");
    EXPECT_EQ(session.terminal.lineText(0), "<shown>") << "local echo";
    session.host.replies.clear();
    session.terminal.notificationActivated({.identifier = "x"});
    session.terminal.notificationActivated({.identifier = "y", .reports = true});
    EXPECT_EQ(session.host.takeReplies(), osc("99;i=y;"));

    Session converting({.convertEol = true});
    converting.terminal.sendKey({.key = Key::enter});
    EXPECT_EQ(converting.host.takeReplies(), "\r") << "the option is for output alone";
    EXPECT_EQ(converting.ask("a\x1B[20$p\x1B[20l\nb"), "\x1B[20;2$y");
    EXPECT_EQ(converting.terminal.lineText(1), "b") << "and no program ends it";
}

TEST(Osc, IsActedUponOnceAndOnlyWhereItIsWellFormed) {
    struct Case {
        const char* label;
        std::string bytes;
        Calls expected;
    };
    const std::string folder = osc("7;file:///a%20b");
    std::string encoded = "file:///";
    for (int i = 0; i < 4000; ++i) {
        encoded += "%61";
    }
    Session session;
    session.terminal.setProgramStatusOsc(3333);
    for (const Case& test : std::vector<Case>{
             {"a folder", folder + folder, {"directory file:///a%20b"}},
             {"no folder", osc("7;/tmp") + osc("7;http://x/"), {}},
             {"a folder whose address is longer than its path", osc("7;" + encoded), {"directory " + encoded}},
             {"one of too many bytes", osc("7;" + encoded + std::string(100, 'a')), {}},
             {"taken back", osc("7;"), {"directory "}},
             {"iTerm's folder, as an address", osc("1337;CurrentDir=/a b") + folder, {"directory file:///a%20b"}},
             {"iTerm's folder, of too many bytes", osc("1337;CurrentDir=/" + std::string(5000, 'a')), {}},
             {"iTerm's folder, not from the root", osc("1337;CurrentDir=tmp"), {}},
             {"status",
              osc("3333;a=1;b\x1B") + osc("3333;a=1;b") + osc("3333;a=2"),
              {"status [a=1] [b]", "status [a=2]"}},
             {"status that is gone", osc("3333;"), {"status"}}}) {
        EXPECT_EQ(session.calls(test.bytes), test.expected) << test.label;
    }
    Session small({.maximumOscBytes = 20});
    small.terminal.setProgramStatusOsc(3333);
    EXPECT_EQ(small.calls(osc("3333;first=1;" + std::string(100, 'x') + ";last=2")), (Calls{"status [last=2]"}))
        << "the end of a long status is kept, in whole records";

    EXPECT_EQ(session.ask(osc("1337;Capabilities")), "");
    Session named({.featureReport = "T2Cw"});
    EXPECT_EQ(
        named.ask(osc("1337;Capabilities") + "\x1B]1337;Capabilities\a"),
        osc("1337;Capabilities=T2Cw") + "\x1B]1337;Capabilities=T2Cw\a");

    // Marks: what continues a prompt is none, and a mark alone changes nothing of the text.
    session.terminal.feed(
        "\x1B[H" + osc("133;A") + "$ \r\n" + osc("133;P;k=s") + "> \r\n" + osc("133;C") + "x\r\n" +
        osc("1337;SetMark") + "y" + osc("133;D;7"));
    const Buffer& b = session.terminal.buffer();
    EXPECT_TRUE(b.line(0).semanticMarks().promptStart);
    EXPECT_FALSE(b.line(1).semanticMarks().promptStart);
    EXPECT_EQ(b.line(1)[0].semanticCode(), static_cast<int>(SemanticContent::prompt));
    EXPECT_TRUE(b.line(3).semanticMarks().promptStart);
    EXPECT_EQ(b.line(3)[0].semanticCode(), static_cast<int>(SemanticContent::output));
    EXPECT_EQ(b.line(3).semanticMarks().exitCode, 7);

    session.calls("");
    EXPECT_EQ(
        session.calls(
            osc("10;#010203") + "\x1B"
                                "c"),
        (Calls{"foreground rgb:0101/0202/0303", "foreground of the theme"}))
        << "a reset is told of";
    EXPECT_EQ(session.ask(osc("5;0;#010203") + osc("104;256") + osc("4;256;?")), "") << "a special colour, reset";
}

TEST(Replies, HoldNothingThatAProgramChose) {
    // A mark in every place that takes a text, plain, in hexadecimal and in base64.
    const std::string mark = "zqZQ";
    const std::string hex = "7A715A51";
    const std::string base64 = encodeBase64(mark);
    Session session;
    session.host.content = "";
    session.host.data.emplace();
    session.host.permission = ClipboardPermission::granted;
    session.host.cellSize = CellSize{8, 16};
    std::string all;
    for (const std::string& text : {mark, hex, base64}) {
        for (const char* osc :
             {"0;%",
              "1;%",
              "2;%",
              "4;%;?",
              "4;1;%",
              "5;%;?",
              "6;%",
              "7;file:///%",
              "8;id=%;http://%",
              "9;%",
              "10;%",
              "21;%=?",
              "21;5=%",
              "22;%",
              "52;%;?",
              "52;c;%",
              "99;%=%;%",
              "99;i=%:p=?;",
              "104;%",
              "133;A;aid=%",
              "133;D;%",
              "777;notify;%;%",
              "1337;%",
              "1337;SetUserVar=%=%",
              "1337;CurrentDir=/%",
              "1337;ReportVariable=%",
              "1337;ReportCellSize=%",
              "5522;type=%",
              "5522;type=read:mime=%;%",
              "5522;type=write:name=%:pw=%",
              "5522;type=wdata:mime=%;!",
              "%;%"}) {
            std::string body;
            for (const char* at = osc; *at != 0; ++at) {
                body += *at == '%' ? text : std::string(1, *at);
            }
            all += "\x1B]" + body + "\x1B\\";
        }
        for (const char* dcs :
             {"\x1BP$q%\x1B\\", "\x1BP+q%\x1B\\", "\x1B_Gi=1;%\x1B\\", "\x1B_Gi=1,%=1;\x1B\\",
              "\x1B_Gi=1,a=T,f=100;%\x1B\\", "\x1B_Gi=1,t=f,s=1,v=1;%\x1B\\", "\x1B_%\x1B\\", "\x1B^%\x1B\\",
              "\x1BP%\x1B\\"}) {
            const std::string_view form = dcs;
            const std::size_t at = form.find('%');
            all += std::string(form.substr(0, at)) + text + std::string(form.substr(at + 1));
        }
    }
    const std::string replies = session.ask(all + "\x1B[20t\x1B[21t\x05\x1BZ\x1B[c");
    EXPECT_NE(replies, "");
    for (const std::string& text : {mark, hex, base64}) {
        EXPECT_EQ(replies.find(text), std::string::npos) << escaped(replies);
    }
}

TEST(Replies, AreToldFromWhatTheUserDoes) {
    class Host final : public ClipboardHost {
    public:
        std::string answers;
        void reply(Terminal&, Bytes bytes) override { answers.append(bytes.begin(), bytes.end()); }
    };
    struct Case {
        const char* label;
        std::string modes;
        std::function<void(Terminal&)> act;
        bool isReply;
    };
    for (const Case& test : std::vector<Case>{
             {"a question", "", [](Terminal& t) { t.feed("\x1B[5n"); }, true},
             {"an image", "", [](Terminal& t) { t.feed("\x1B_Gi=1,a=q,s=1,v=1,f=24;YWFh\x1B\\"); }, true},
             {"the clipboard", "", [](Terminal& t) { t.feed(osc("5522;type=read;Lg==")); }, true},
             {"a key", "", [](Terminal& t) { t.sendKey({.key = Key::up}); }, false},
             {"focus", "\x1B[?1004h", [](Terminal& t) { t.sendFocus(FocusChange::gained); }, false},
             {"a paste", "", [](Terminal& t) { t.paste("a"); }, false},
             {"a paste that is announced", "\x1B[?5522h", [](Terminal& t) { t.paste("a"); }, false},
             {"a notification", "", [](Terminal& t) { t.notificationActivated({.identifier = "y", .reports = true}); },
              false}}) {
        Host host;
        Terminal terminal(host);
        terminal.feed(test.modes);
        test.act(terminal);
        EXPECT_NE(host.answers.empty(), test.isReply) << test.label;
        EXPECT_NE(host.replies.empty(), !test.isReply) << test.label;
    }
}

TEST(Replies, LogTheArgumentsOfUnusualDeviceAttributes) {
    struct Case {
        const char* bytes;
        Calls messages;
    };
    const std::string unknown = "Info: Got a CSI > c with an unknown set of argument";
    for (const Case& test : std::vector<Case>{
             {"\x1B[c\x1B[0c\x1BZ", {}},
             {"\x1B[1;2c", {"SendDeviceAttributes got 1,2 and "}},
             {"\x1B[>c", {"SendDeviceAttributes got 0 and >"}},
             {"\x1B[>0;3c", {"SendDeviceAttributes got 0,3 and >", unknown}},
             {"\x1B[=7c", {"SendDeviceAttributes got 7 and ="}},
             {"\x1B[?1c", {"SendDeviceAttributes got 1 and ?"}}}) {
        Session session;
        session.host.logs = true;
        session.terminal.feed(test.bytes);
        EXPECT_EQ(session.host.messages, test.messages) << escaped(test.bytes);
    }
}

TEST(ScreenSnapshot, IsReadOnAnotherThreadWhileTheTerminalGoesOn) {
    // A letter and a cluster each, in a colour that names them; of so many that numbers are given anew.
    constexpr int written = 20'000;
    std::mutex mutex;
    std::condition_variable changed;
    std::shared_ptr<const ScreenSnapshot> newest;
    bool isDone = false;
    int seen = 0;
    int wrong = 0;
    std::thread reader([&] {
        for (;;) {
            std::unique_lock lock(mutex);
            changed.wait(lock, [&] { return newest != nullptr || isDone; });
            const auto snapshot = std::exchange(newest, nullptr);
            if (!snapshot) {
                return;
            }
            lock.unlock();
            for (const auto& line : snapshot->lines) {
                for (const PackedCell cell : line->usedCells()) {
                    char32_t memory = 0;
                    const std::u32string_view text = snapshot->arena->scalarValues(cell, memory);
                    const std::uint32_t number = snapshot->arena->attributeOf(cell).fg.value();
                    ++seen;
                    wrong +=
                        text.size() == 2 && text[0] == U'a' + number % 26 && text[1] == 0x300 + number % 64 ? 0 : 1;
                }
            }
        }
    });
    Session session({.cols = 20, .rows = 4, .scrollback = 0});
    ScreenSnapshot snapshot;
    for (int i = 0; i < written; ++i) {
        std::string text = "\x1B[38;2;0;" + std::to_string(i / 256) + ";" + std::to_string(i % 256) + "m";
        text += static_cast<char>('a' + i % 26);
        unicode::appendUtf8(text, static_cast<char32_t>(0x300 + i % 64));
        session.terminal.feed(text);
        if (i % 16 == 0) {
            snapshot = takeSnapshot(session.terminal, &snapshot);
            const std::scoped_lock lock(mutex);
            newest = std::make_shared<const ScreenSnapshot>(snapshot);
            changed.notify_one();
        }
    }
    {
        const std::scoped_lock lock(mutex);
        isDone = true;
        changed.notify_one();
    }
    reader.join();
    EXPECT_GT(seen, 0);
    EXPECT_EQ(wrong, 0);
}

TEST(Selection, EndsWhenItsTextGoes) {
    struct Case {
        const char* label;
        std::string bytes;
        bool isKept;
    };
    for (const Case& test : std::vector<Case>{
             {"more text", "\x1B[5Hmore", true},
             {"scrolling into the history", "\x1B[25H\n\n", true},
             {"a region elsewhere", "\x1B[5;8r\x1B[8H\n", true},
             {"a region around it", "\x1B[2;8r\x1B[8H\n", false},
             {"lines inserted above", "\x1B[H\x1B[L", false},
             {"the other screen", "\x1B[?47h", false},
             {"history that is gone", "\x1B[25H" + std::string(600, '\n'), false},
             {"RIS",
              "\x1B"
              "c",
              false}}) {
        Session session;
        session.terminal.feed("\r\none two");
        session.terminal.startSelection({1, 5}, TextSelection::Unit::word);
        session.terminal.extendSelection({1, 6});
        const Calls expected = test.isKept ? Calls{"selection two"} : Calls{"selection two", "selection "};
        Calls calls = session.calls(test.bytes);
        std::erase_if(calls, [](const std::string& call) { return !call.starts_with("selection"); });
        EXPECT_EQ(calls, expected) << test.label;
    }
}

TEST(Selection, FollowsItsTextWhereTheWidthChanges) {
    struct Case {
        const char* label;
        TextSelection::Unit unit;
        std::string screen;
        std::string text;
    };
    for (const Case& test : std::vector<Case>{
             {"text", TextSelection::Unit::character, "", "ne tw"},
             {"a rectangle", TextSelection::Unit::rectangle, "", ""},
             {"the other screen, which does not flow", TextSelection::Unit::character, "\x1B[?1049h", ""}}) {
        Session session;
        session.terminal.feed(test.screen + "\r\none two");
        session.terminal.startSelection({1, 1}, test.unit);
        session.terminal.extendSelection({1, 6});
        session.host.calls.clear();
        session.terminal.resize(3, 25);
        EXPECT_EQ(session.terminal.selection().text(session.terminal.buffer()), test.text) << test.label;
        EXPECT_EQ(std::ranges::count(session.host.calls, "selection " + test.text), 1) << test.label;
    }
}

} // namespace term
