#include "SessionFixture.h"
#include "TermEngine/ScreenSnapshot.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace term {

using namespace std::chrono_literals;

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
        session.terminal.feed(osc("2;" + std::string(TerminalOscEventDispatcher::maximumWaitingBytes, 'x')));
        EXPECT_EQ(session.terminal.oscEvents().droppedCount(), 1U) << "one that never fits";
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
             {"text beside it", "\x1B[2HO\x1B[2;8H!", true},
             {"written over", "\x1B[2;6HX", false},
             {"written over with itself", "\x1B[2J\x1B[2Hone two", true},
             {"erased", "\x1B[2J", false},
             {"characters deleted before it", "\x1B[2H\x1B[P", false},
             {"written over on its way into the history", "\x1B[2;6HX\x1B[25H\n\n\n", false},
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
