#include "TermEngine/Diagnostics.h"
#include "TerminalCheck.h"

namespace {

/// Of what a thread that draws sees.
uint64_t digestOf(const term::ScreenSnapshot& snapshot) {
    uint64_t digest = 0;
    const auto add = [&digest](uint64_t value) { digest = (digest ^ value) * 0x100000001B3; };
    for (const auto& line : snapshot.lines) {
        for (const term::PackedCell cell : line->usedCells()) {
            const term::PackedAttributeKey key = snapshot.arena->attributeOf(cell).packed();
            add(key.word0);
            add(key.word1);
            char32_t memory = 0;
            for (const char32_t scalar : snapshot.arena->scalarValues(cell, memory)) {
                add(scalar);
            }
            add(cell.payload() == 0 ? 0 : snapshot.arena->link(cell.payload()).size());
        }
    }
    return digest;
}

/// What a person does with the mouse.
void select(term::Terminal& terminal, int index) {
    const term::Buffer& buffer = terminal.buffer();
    const int64_t line = static_cast<int64_t>(buffer.trimmedCount()) + index;
    terminal.clickPrompt({line, 3});
    if (index >= buffer.lineCount()) {
        return;
    }
    terminal.startSelection({line, 1}, static_cast<term::TextSelection::Unit>(line % 4));
    terminal.extendSelection({line - 2, 9});
    static_cast<void>(term::semanticRangeAt(buffer, {line, 2}));
}

} // namespace

/// A terminal of a size and options from the first bytes; then pieces of a program's output, and what a host does
/// between them: resizes, another length of history, resets, snapshots.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The engine itself never reads past an end.
    term::setDiagnosticSink([](std::string_view) { require(false); });
    FuzzInput input(data, size);
    term::TerminalOptions options = takeOptions(input);
    const auto answers = (input.byte() & 1U) != 0 ? FuzzHost::Answers::fromWithin : FuzzHost::Answers::plain;
    FuzzHost host(answers);
    term::Terminal terminal(host, options);
    term::ScreenSnapshot snapshot;
    uint64_t drawnDigest = 0;
    DrawnLines drawn;
    int64_t now = 0;
    while (!input.isEmpty()) {
        const uint8_t what = input.byte();
        switch (what) {
        case 0xF9:
            terminal.resize(1 + input.byte() % 80, 1 + input.byte() % 16);
            break;
        case 0xFA:
            options.scrollback = input.byte() % 32;
            terminal.setScrollback(options.scrollback);
            break;
        case 0xFB:
            terminal.reset();
            break;
        case 0xFC:
            terminal.synchronizedOutputTimedOut();
            terminal.themeChanged();
            break;
        case 0xFD:
            terminal.arena().sweep();
            break;
        case 0xFE:
            require(digestOf(snapshot) == drawnDigest);
            snapshot = term::takeSnapshot(terminal, &snapshot);
            drawnDigest = digestOf(snapshot);
            select(terminal, input.byte() % 32);
            break;
        case 0xFF:
            terminal.buffer().setYDisp(input.byte());
            now += 100;
            terminal.advanceAnimations(now);
            static_cast<void>(terminal.presentedRow(0));
            break;
        default:
            terminal.feed(input.take(what));
        }
        requireSoundBuffer(terminal.buffer(), options.scrollback);
        drawn.require(terminal);
        require(terminal.images().usedBytes() <= options.kittyGraphics.imageCacheLimitBytes);
        require(terminal.title().size() <= term::Terminal::maximumTextBytes);
    }
    requireSoundBuffer(terminal.normalBuffer(), options.scrollback);
    // The others hold titles.
    if (answers == FuzzHost::Answers::plain) {
        requireSoundReplies(host.replies);
    }
    return 0;
}
