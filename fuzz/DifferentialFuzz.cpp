#include "TerminalCheck.h"

/// The same bytes three times: whole, in pieces from the first bytes, and without vector instructions. The screens,
/// the cursor, the replies and the calls on the host are the same.
///
/// What a feed has an allowance of (`PixelAllowance`, `RectangleMemory::mostSteps`) pieces get anew: with at most 254
/// bytes a feed, pictures of 12,500 pixels and screens of 3,072 cells, none comes near.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const term::TerminalOptions options = takeOptions(input);
    uint32_t cuts = input.number();
    FuzzHost wholeHost(FuzzHost::Answers::plain);
    FuzzHost piecesHost(FuzzHost::Answers::plain);
    FuzzHost plainHost(FuzzHost::Answers::plain);
    term::Terminal whole(wholeHost, options);
    term::Terminal pieces(piecesHost, options);
    term::Terminal plain(plainHost, options, term::availableVectorOps().front());
    while (!input.isEmpty()) {
        const uint8_t what = input.byte();
        if (what == 0xFF) {
            const int cols = 1 + input.byte() % 80;
            const int rows = 1 + input.byte() % 16;
            for (term::Terminal* terminal : {&whole, &pieces, &plain}) {
                terminal->resize(cols, rows);
            }
        } else {
            std::string_view bytes = input.take(what);
            whole.feed(bytes);
            plain.feed(bytes);
            while (!bytes.empty()) {
                cuts = cuts * 1664525 + 1013904223;
                const size_t piece = std::min<size_t>(1 + (cuts >> 16U) % ((cuts >> 30U) == 0 ? 40 : 3), bytes.size());
                pieces.feed(bytes.substr(0, piece));
                bytes.remove_prefix(piece);
            }
        }
        require(sameScreen(whole, pieces) && sameScreen(whole, plain));
        require(
            whole.parser().currentState() == pieces.parser().currentState() &&
            whole.parser().currentState() == plain.parser().currentState());
    }
    require(wholeHost.replies == piecesHost.replies && wholeHost.replies == plainHost.replies);
    require(wholeHost.calls == piecesHost.calls && wholeHost.calls == plainHost.calls);
    return 0;
}
