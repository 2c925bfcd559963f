#include "FuzzInput.h"
#include "TermEngine/EscapeSequenceParser.h"

namespace {

using term::Bytes;
using term::CsiParameters;

/// Writes down what a parser hands on, runs of text as one, and holds it to its promises. BEL resets the parser where
/// that is wanted.
class Journal final : public term::ParserHandler {
public:
    enum class OnBell : uint8_t { nothing, reset };
    Journal(const term::VectorOps& ops, OnBell onBell, size_t maximumOscBytes) : parser(*this, ops), m_onBell(onBell) {
        parser.setMaximumOscBytes(maximumOscBytes);
        m_limit = maximumOscBytes;
    }

    term::EscapeSequenceParser parser;
    std::string text;

    void printAscii(Bytes run) override {
        require(!run.empty());
        require(std::ranges::all_of(run, [](uint8_t byte) { return byte >= 0x20 && byte < 0x7F; }));
        text.append(run.begin(), run.end());
    }
    void printScalars(std::span<const char32_t> run) override {
        for (const char32_t scalar : run) {
            require(scalar >= 0x20 && scalar != 0x7F && scalar < 0x110000 && (scalar < 0xD800 || scalar > 0xDFFF));
            text += scalar < 0x80 ? std::string(1, static_cast<char>(scalar))
                                  : "<" + std::to_string(static_cast<uint32_t>(scalar)) + ">";
        }
    }
    bool execute(uint8_t code) override {
        require(code < 0x20 || (code >= 0x80 && code < 0xA0));
        note("execute", code);
        if (code == '\a' && m_onBell == OnBell::reset) {
            parser.reset();
        }
        return code % 2 == 0;
    }
    bool dispatchCsi(char final, const CsiParameters& parameters, std::string_view collected) override {
        require(final >= 0x40 && final <= 0x7E);
        noteSequence("csi", final, parameters, collected);
        return final % 2 == 0;
    }
    bool dispatchEsc(std::string_view collected, char final) override {
        require(final >= 0x30 && final <= 0x7E);
        note("esc " + std::string(collected), final);
        return final % 2 == 0;
    }
    bool dispatchOsc(int code, Bytes payload, term::StringEnd end) override {
        require(code >= 0 && payload.size() <= m_limit);
        note("osc " + std::string(payload.begin(), payload.end()), code);
        note("end", static_cast<int>(end));
        return false;
    }
    bool dispatchApc(Bytes payload) override {
        note("apc " + std::string(payload.begin(), payload.end()), 0);
        return false;
    }
    std::unique_ptr<term::DcsHandler> dcsHandler(
        char final, const CsiParameters& parameters, std::string_view collected) override {
        noteSequence("dcs", final, parameters, collected);
        return final == 'x' ? nullptr : std::make_unique<Data>(*this);
    }
    [[nodiscard]] bool isLogging() const override { return true; }
    void log(std::string_view message) override { text.append(message); }

private:
    struct Data final : term::DcsHandler {
        explicit Data(Journal& owner) : journal(owner) {}
        void put(Bytes data) override { journal.text.append(data.begin(), data.end()); }
        void unhook() override { journal.note("unhook", 0); }
        Journal& journal;
    };
    void note(const std::string& what, int number) { text += "{" + what + " " + std::to_string(number) + "}"; }
    void noteSequence(const char* kind, char final, const CsiParameters& parameters, std::string_view collected) {
        require(parameters.count >= 1 && parameters.count <= CsiParameters::maximumCount);
        note(kind + std::string(collected), final);
        for (int i = 0; i < parameters.count; ++i) {
            require(parameters.at(i) >= 0 && parameters.at(i) <= CsiParameters::maximumValue);
            note(parameters.endsWithColon(i) ? ":" : ";", parameters.at(i));
        }
    }

    OnBell m_onBell;
    size_t m_limit = 0;
};

} // namespace

/// Any bytes, whole and cut by the first byte's measure, with every set of vector instructions: the same calls.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const size_t step = input.byte() % 70 + size_t{1};
    const uint8_t flags = input.byte();
    const auto onBell = (flags & 1U) != 0 ? Journal::OnBell::reset : Journal::OnBell::nothing;
    const size_t limit = 4U << (flags >> 4U);
    const int status = (flags & 2U) != 0 ? 7 : -1;
    const std::string_view bytes = input.take(size);
    const Bytes all(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());

    std::string expected;
    for (const term::VectorOps& ops : term::availableVectorOps()) {
        for (const size_t piece : {std::max<size_t>(all.size(), 1), step}) {
            Journal journal(ops, onBell, limit);
            journal.parser.setProgramStatusOsc(status);
            for (Bytes rest = all; !rest.empty(); rest = rest.subspan(std::min(piece, rest.size()))) {
                journal.parser.parseBorrowed(rest.first(std::min(piece, rest.size())));
            }
            if (expected.empty()) {
                expected = journal.text;
            }
            require(journal.text == expected);
        }
    }
    return 0;
}
