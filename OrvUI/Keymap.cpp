#include "OrvUI/Keymap.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

#ifdef Q_OS_MACOS
constexpr bool isMac = true;
#else
constexpr bool isMac = false;
#endif

#define ORV_WORDS(text) QT_TRANSLATE_NOOP("Shortcuts", text)
constexpr const char* everywhere = ORV_WORDS("Everywhere");
constexpr const char* homePage = ORV_WORDS("Home page");
constexpr const char* project = ORV_WORDS("A project, on its page or its card");
constexpr const char* logs = ORV_WORDS("Logs");
constexpr const char* git = ORV_WORDS("Git");
constexpr const char* files = ORV_WORDS("Files");
constexpr const char* terminal = ORV_WORDS("Terminal");
constexpr const char* selecting = ORV_WORDS("Terminal, while text is selected by keys");
constexpr const char* work = ORV_WORDS("Tasks and AI");

// In the order in which they are listed.
constexpr std::array table{
    Keymap::Entry{
        "quickPanel", everywhere, ORV_WORDS("Quick panel, from any program"), u"Ctrl+Alt+Meta+L", u"Meta+Alt+Ctrl+L"},
    Keymap::Entry{"palette", everywhere, ORV_WORDS("Command palette"), u"Ctrl+K", nullptr, u"Ctrl+Shift+K"},
    Keymap::Entry{"shortcuts", everywhere, ORV_WORDS("All shortcuts"), u"Ctrl+/", u"Ctrl+/|Ctrl+?", u"Ctrl+Shift+/"},
    Keymap::Entry{"search", everywhere, ORV_WORDS("Search in the page"), u"Ctrl+F", nullptr},
    Keymap::Entry{"nextHit", everywhere, ORV_WORDS("Next hit"), u"F3", u"Ctrl+G"},
    Keymap::Entry{"previousHit", everywhere, ORV_WORDS("Previous hit"), u"Shift+F3", u"Ctrl+Shift+G"},
    Keymap::Entry{"settings", everywhere, ORV_WORDS("Settings"), u"Ctrl+,", nullptr, u"Ctrl+Shift+,"},
    Keymap::Entry{"newFolder", everywhere, ORV_WORDS("New folder"), u"Ctrl+N", nullptr},
    Keymap::Entry{"clone", everywhere, ORV_WORDS("Clone repository"), u"Ctrl+Shift+N", nullptr},
    Keymap::Entry{"refresh", everywhere, ORV_WORDS("Refresh projects"), u"Ctrl+R F5", u"Ctrl+R"},
    Keymap::Entry{"home", everywhere, ORV_WORDS("Home"), u"Alt+Home", u"Ctrl+Shift+H", u"Ctrl+Shift+H"},
    Keymap::Entry{"filter", everywhere, ORV_WORDS("Filters of the sidebar"), u"Ctrl+1…5", nullptr},
    Keymap::Entry{"tasks", everywhere, ORV_WORDS("Tasks"), u"Ctrl+6", nullptr},
    Keymap::Entry{"ai", everywhere, ORV_WORDS("AI"), u"Ctrl+7", nullptr},
    Keymap::Entry{"back", everywhere, ORV_WORDS("Back"), u"Alt+Left", u"Ctrl+["},
    Keymap::Entry{"forward", everywhere, ORV_WORDS("Forward"), u"Alt+Right", u"Ctrl+]"},
    Keymap::Entry{
        "sidebar", everywhere, ORV_WORDS("Show or hide the sidebar"), u"Ctrl+Alt+S", u"Meta+Ctrl+S", u"Ctrl+Shift+S"},
    Keymap::Entry{"undo", everywhere, ORV_WORDS("Take back a deletion, a pin or a discard"), u"Ctrl+Z", nullptr},
    Keymap::Entry{"nextRegion", everywhere, ORV_WORDS("Next part of the window"), u"F6", nullptr, u"Ctrl+Shift+F6"},
    Keymap::Entry{"previousRegion", everywhere, ORV_WORDS("Previous part of the window"), u"Shift+F6", nullptr},
    Keymap::Entry{"menu", everywhere, ORV_WORDS("Menu of what has the focus"), u"Shift+F10 Menu", u"Meta+Enter"},
    Keymap::Entry{"closeWindow", everywhere, ORV_WORDS("Close the window"), u"Ctrl+W", nullptr},
    Keymap::Entry{"quit", everywhere, ORV_WORDS("Quit"), u"Ctrl+Q", nullptr, u"Ctrl+Shift+Q"},

    Keymap::Entry{"filters", homePage, ORV_WORDS("Filters"), u"Ctrl+Alt+F", nullptr},
    Keymap::Entry{"view", homePage, ORV_WORDS("Cards or folders"), u"Ctrl+Alt+V", nullptr},
    Keymap::Entry{"unsaved", homePage, ORV_WORDS("Unsaved changes only"), u"Ctrl+Alt+U", nullptr},

    Keymap::Entry{"run", project, ORV_WORDS("Run, or stop"), u"Ctrl+Enter", nullptr, u"Ctrl+Shift+Enter"},
    Keymap::Entry{"chooseRun", project, ORV_WORDS("Choose what to run"), u"Ctrl+Alt+Enter", nullptr},
    Keymap::Entry{"restart", project, ORV_WORDS("Restart"), u"Ctrl+Shift+R", nullptr},
    Keymap::Entry{"stopAll", project, ORV_WORDS("Stop all services of the project"), u"Ctrl+Shift+.", nullptr},
    Keymap::Entry{"browse", project, ORV_WORDS("Open in your browser"), u"Ctrl+O", nullptr},
    Keymap::Entry{"pin", project, ORV_WORDS("Pin"), u"Ctrl+D", nullptr},
    Keymap::Entry{"ask", project, ORV_WORDS("Ask AI"), u"Ctrl+J", nullptr, u"Ctrl+Shift+J"},
    Keymap::Entry{"tab", project, ORV_WORDS("Tabs of the page"), u"Alt+1…6", u"Ctrl+Alt+1…6"},
    Keymap::Entry{"fetch", project, ORV_WORDS("Fetch"), u"Ctrl+Shift+F", nullptr},
    Keymap::Entry{"pull", project, ORV_WORDS("Pull"), u"Ctrl+Shift+L", nullptr},
    Keymap::Entry{"push", project, ORV_WORDS("Push"), u"Ctrl+Shift+P", nullptr},
    Keymap::Entry{"branches", project, ORV_WORDS("Branches"), u"Ctrl+B", nullptr},
    Keymap::Entry{"newBranch", project, ORV_WORDS("New branch"), u"Ctrl+Shift+B", nullptr},
    Keymap::Entry{"newTerminal", project, ORV_WORDS("New terminal"), u"Ctrl+Shift+T", u"Ctrl+T"},
    Keymap::Entry{"findFile", project, ORV_WORDS("Find a file"), u"Ctrl+P", nullptr},

    Keymap::Entry{"follow", logs, ORV_WORDS("Follow the end"), u"Ctrl+End", u"Ctrl+Down"},
    Keymap::Entry{"copySelected", logs, ORV_WORDS("Copy what is selected"), u"Ctrl+C", nullptr},
    Keymap::Entry{"selectLogs", logs, ORV_WORDS("Select all"), u"Ctrl+A", nullptr},
    Keymap::Entry{"selectLogLines", logs, ORV_WORDS("Select lines"), u"Shift+Up Shift+Down", nullptr},
    Keymap::Entry{"logSideways", logs, ORV_WORDS("Move long lines to the side"), u"Left Right", nullptr},
    Keymap::Entry{"copyLogs", logs, ORV_WORDS("Copy all"), u"Ctrl+Shift+C", nullptr},
    Keymap::Entry{"clearLogs", logs, ORV_WORDS("Clear"), u"Ctrl+Alt+K", nullptr},

    Keymap::Entry{"stage", git, ORV_WORDS("Stage or unstage a file, hunk or lines"), u"Space", nullptr},
    Keymap::Entry{"stageAll", git, ORV_WORDS("Stage or unstage all"), u"Ctrl+Shift+A", nullptr},
    Keymap::Entry{"discard", git, ORV_WORDS("Discard"), u"Ctrl+Del", u"Ctrl+Backspace"},
    Keymap::Entry{"commit", git, ORV_WORDS("Commit, from the message"), u"Ctrl+Enter", nullptr},

    Keymap::Entry{"edit", files, ORV_WORDS("Open in your editor"), u"Ctrl+E", nullptr},

    Keymap::Entry{"closeTerminal", terminal, ORV_WORDS("Close the terminal"), u"Ctrl+Shift+W", nullptr},
    Keymap::Entry{"nextTerminal", terminal, ORV_WORDS("Next terminal"), u"Ctrl+Tab", u"Meta+Tab"},
    Keymap::Entry{
        "previousTerminal", terminal, ORV_WORDS("Previous terminal"), u"Ctrl+Shift+Tab|Ctrl+Shift+Backtab",
        u"Meta+Shift+Tab|Meta+Shift+Backtab"},
    Keymap::Entry{
        "terminalLeft", terminal, ORV_WORDS("Move the terminal to the left"), u"Ctrl+Shift+PgUp", u"Ctrl+Shift+Left"},
    Keymap::Entry{
        "terminalRight", terminal, ORV_WORDS("Move the terminal to the right"), u"Ctrl+Shift+PgDown",
        u"Ctrl+Shift+Right"},
    Keymap::Entry{"terminal", terminal, ORV_WORDS("Terminals by their number"), u"Ctrl+Shift+1…9", u"Meta+Shift+1…9"},
    Keymap::Entry{"terminalMenu", terminal, ORV_WORDS("Menu"), u"Ctrl+Shift+F10", nullptr},
    Keymap::Entry{"terminalCopy", terminal, ORV_WORDS("Copy"), u"Ctrl+Shift+C", u"Ctrl+C"},
    Keymap::Entry{"terminalPaste", terminal, ORV_WORDS("Paste"), u"Ctrl+Shift+V", u"Ctrl+V"},
    Keymap::Entry{"terminalSelectAll", terminal, ORV_WORDS("Select all"), u"Ctrl+Shift+A", u"Ctrl+A"},
    Keymap::Entry{"terminalOutput", terminal, ORV_WORDS("Select the last output"), u"Ctrl+Shift+O", nullptr},
    Keymap::Entry{
        "terminalSelect", terminal, ORV_WORDS("Select text by keys"), u"Ctrl+Shift+Space", u"Meta+Shift+Space"},
    Keymap::Entry{
        "terminalLink", terminal, ORV_WORDS("Open a link by its letters, or copy it with Shift"), u"Ctrl+Shift+E",
        nullptr},
    Keymap::Entry{"terminalBigger", terminal, ORV_WORDS("Bigger letters"), u"Ctrl+Shift+Plus", u"Ctrl+Plus"},
    Keymap::Entry{"terminalSmaller", terminal, ORV_WORDS("Smaller letters"), u"Ctrl+Shift+Minus", u"Ctrl+Minus"},
    Keymap::Entry{"terminalSize", terminal, ORV_WORDS("Letters as they were"), u"Ctrl+Shift+0", u"Ctrl+0"},
    Keymap::Entry{
        "terminalLine", terminal, ORV_WORDS("Scroll by a line"), u"Ctrl+Shift+Up Ctrl+Shift+Down",
        u"Ctrl+Up Ctrl+Down"},
    Keymap::Entry{"terminalPage", terminal, ORV_WORDS("Scroll by a page"), u"Shift+PgUp Shift+PgDown", nullptr},
    Keymap::Entry{
        "terminalEnds", terminal, ORV_WORDS("To the first line, to the last"), u"Shift+Home Shift+End", nullptr},
    Keymap::Entry{
        "terminalPrompt", terminal, ORV_WORDS("Previous and next prompt"), u"Ctrl+Shift+Z Ctrl+Shift+X",
        u"Ctrl+PgUp Ctrl+PgDown"},
    Keymap::Entry{"allowCopy", terminal, ORV_WORDS("Let the program copy, when it asks"), u"Ctrl+Shift+Y", nullptr},
    Keymap::Entry{"terminalSearch", terminal, ORV_WORDS("Search"), u"Ctrl+Shift+F", u"Ctrl+F"},

    Keymap::Entry{"selectGo", selecting, ORV_WORDS("By character, by line"), u"Left Right Up Down|H L K J", nullptr},
    Keymap::Entry{
        "selectWord", selecting, ORV_WORDS("By word"), u"Ctrl+Left Ctrl+Right|B W", u"Alt+Left Alt+Right|B W"},
    Keymap::Entry{"selectLine", selecting, ORV_WORDS("To the ends of the line"), u"Home End|0 $", nullptr},
    Keymap::Entry{"selectPage", selecting, ORV_WORDS("By page"), u"PgUp PgDown", nullptr},
    Keymap::Entry{
        "selectEnds", selecting, ORV_WORDS("To the first line, to the last"), u"Ctrl+Home Ctrl+End|G Shift+G", nullptr},
    Keymap::Entry{"selectPrompt", selecting, ORV_WORDS("Previous and next prompt"), u"Ctrl+Up Ctrl+Down", nullptr},
    Keymap::Entry{
        "selectThere", selecting, ORV_WORDS("Select on the way there"), u"Shift+Left Shift+Right Shift+Up Shift+Down",
        nullptr},
    Keymap::Entry{"selectMark", selecting, ORV_WORDS("Select on every way from here, or no more"), u"Space V", nullptr},
    Keymap::Entry{"selectLines", selecting, ORV_WORDS("Whole lines"), u"Shift+V", nullptr},
    Keymap::Entry{"selectRectangle", selecting, ORV_WORDS("A rectangle"), u"Ctrl+V", nullptr},
    Keymap::Entry{"selectOther", selecting, ORV_WORDS("To its other end"), u"O", nullptr},
    Keymap::Entry{"selectCopy", selecting, ORV_WORDS("Copy, and end it"), u"Enter Y|Ctrl+C", nullptr},
    Keymap::Entry{"selectLeave", selecting, ORV_WORDS("End it"), u"Esc Q", nullptr},

    Keymap::Entry{"newTask", work, ORV_WORDS("New task"), u"Ctrl+Alt+N", nullptr},
    Keymap::Entry{"taskDone", work, ORV_WORDS("Task done"), u"Space", nullptr},
    Keymap::Entry{"renameTask", work, ORV_WORDS("Rename the task"), u"Enter", nullptr},
    Keymap::Entry{"deleteTask", work, ORV_WORDS("Delete the task"), u"Del", u"Backspace"},
    Keymap::Entry{"handTask", work, ORV_WORDS("Hand the task to AI"), u"Ctrl+J", nullptr},
    Keymap::Entry{"start", work, ORV_WORDS("Start the agent"), u"Ctrl+Enter", nullptr},
    Keymap::Entry{"startInTerminal", work, ORV_WORDS("Start it in a terminal"), u"Ctrl+Shift+Enter", nullptr},
    Keymap::Entry{"stopRun", work, ORV_WORDS("Stop the agent"), u"Ctrl+.", nullptr},
};
#undef ORV_WORDS

struct KeyName {
    QStringView name;
    QStringView mac;
};
constexpr std::array keyNames{
    KeyName{u"Ctrl", u"⌘"},  KeyName{u"Alt", u"⌥"},   KeyName{u"Shift", u"⇧"},     KeyName{u"Meta", u"⌃"},
    KeyName{u"Enter", u"↩"}, KeyName{u"Left", u"←"},  KeyName{u"Right", u"→"},     KeyName{u"Up", u"↑"},
    KeyName{u"Down", u"↓"},  KeyName{u"Space", u"␣"}, KeyName{u"Tab", u"⇥"},       KeyName{u"Home", u"↖"},
    KeyName{u"Del", u"⌦"},   KeyName{u"End", u"↘"},   KeyName{u"Backspace", u"⌫"}, KeyName{u"Esc", u"⎋"},
};

/// Arrows are drawn as such on every platform; so are keys that Linux has no other word for.
bool isSignEverywhere(QStringView name) {
    return name == u"Left" || name == u"Right" || name == u"Up" || name == u"Down";
}

QString sequences(const Keymap::Entry& entry) {
    return QString::fromUtf16(isMac && entry.macKeys != nullptr ? entry.macKeys : entry.keys);
}

const Keymap::Entry* find(const QString& id) {
    const auto found =
        std::ranges::find_if(table, [&id](const Keymap::Entry& entry) { return id == QLatin1StringView(entry.id); });
    if (found == table.end()) {
        qWarning("there are no keys of \"%s\"", qPrintable(id));
        return nullptr;
    }
    return found;
}

/// "Ctrl+1…5" and 2 are "Ctrl+3".
QString nthOf(const QString& sequence, int index) {
    const qsizetype dots = sequence.indexOf(u'…');
    return dots > 0 ? sequence.left(dots - 1) + QString::number(index + 1) : sequence;
}

} // namespace

std::span<const Keymap::Entry> Keymap::entries() {
    return table;
}

QStringList Keymap::shown(const Entry& entry) {
    return sequences(entry).section(u'|', 0, 0).split(u' ');
}

QString Keymap::inTerminal(const Entry& entry) {
    return !isMac && entry.terminalKeys != nullptr ? QString::fromUtf16(entry.terminalKeys) : QString();
}

QVariantList Keymap::of(const QString& id) {
    QVariantList found;
    if (const Entry* entry = find(id)) {
        const QString all = sequences(*entry).replace(u'|', u' ') + u' ' + inTerminal(*entry);
        for (const QString& sequence : all.split(u' ', Qt::SkipEmptyParts)) {
            // Qt calls Enter that of the keypad only.
            if (sequence.endsWith(u"Enter"_s)) {
                found.append(QString(sequence).replace(u"Enter"_s, u"Return"_s));
            }
            found.append(sequence);
        }
    }
    return found;
}

QString Keymap::nth(const QString& id, int index) {
    const Entry* entry = find(id);
    return entry != nullptr ? nthOf(sequences(*entry), index) : QString();
}

QString Keymap::text(const QString& id) {
    const Entry* entry = find(id);
    return entry != nullptr ? textOf(shown(*entry).first()) : QString();
}

QStringList Keymap::keysOf(const QString& id) {
    const Entry* entry = find(id);
    return entry != nullptr ? keys(shown(*entry).first()) : QStringList();
}

QString Keymap::nthText(const QString& id, int index) {
    return textOf(nth(id, index));
}

QStringList Keymap::keys(const QString& sequence) {
    QStringList found = sequence.split(u'+', Qt::SkipEmptyParts);
    for (QString& key : found) {
        const auto name = std::ranges::find(keyNames, QStringView(key), &KeyName::name);
        if (name != keyNames.end() && (isMac || isSignEverywhere(key))) {
            key = name->mac.toString();
        } else if (key == u"Meta") {
            key = u"Super"_s;
        }
    }
    return found;
}

QString Keymap::textOf(const QString& sequence) {
    return keys(sequence).join(isMac ? QString() : u" "_s);
}

} // namespace orv
