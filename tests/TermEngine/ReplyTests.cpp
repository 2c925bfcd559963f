#include "SessionFixture.h"
#include "TermEngine/Base64.h"

#include <gtest/gtest.h>

namespace term {

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

TEST(Replies, ToOneStringAreBoundedAndSoAreItsEffects) {
    for (const auto& [begin, question] :
         {std::pair("4", ";7;?"), std::pair("21", ";7=?"), std::pair("21", ";cursor=?")}) {
        std::string string = std::string("\x1B]") + begin;
        for (int i = 0; i < 2000; ++i) {
            string += question;
        }
        Session session;
        const std::string replies = session.ask(string + "\a");
        EXPECT_EQ(std::ranges::count(replies, ':'), 512) << begin << question; // one in each "rgb:"
    }
    for (const std::string change : {"\x1B]4;1;red", "\x1B]21;1=red", "\x1B]104;1"}) {
        Session session;
        session.terminal.feed("\x1B]4;2;rgb:1/2/3\a");
        const std::string entry = change.substr(change.find(';'));
        std::string last = entry;
        last[1] = '2';
        std::string string = change;
        for (int i = 0; i < 2000; ++i) {
            string += entry;
        }
        EXPECT_EQ(session.ask(string + last + "\a\x1B]4;2;?\a"), "\x1B]4;2;rgb:1111/2222/3333\a") << change;
        EXPECT_NE(session.ask(change + last + "\a\x1B]4;2;?\a"), "\x1B]4;2;rgb:1111/2222/3333\a") << change;
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

} // namespace term
