// termdump: a program under the terminal engine, without a window.

#include "TermEngine/LocalProcess.h"
#include "TermEngine/Terminal.h"

#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

namespace {

constexpr const char* usage = R"(usage: termdump [options] -- COMMAND [ARGUMENT...]
       termdump --filter [--size 80x24]
       termdump --replay FILE [options]

Runs a command on a pseudo-terminal and prints the screen that it made.

  --size COLSxROWS   of the terminal (80x24)
  --scrollback N     lines of history (500)
  --input FILE       sent to the command in the pieces between NUL bytes, one each time that it has been quiet
  --wait TEXT        ends when the text is on the screen
  --quiet MS         ends when the command has written nothing for so long (300)
  --timeout MS       ends at the latest then (10000)
  --text             prints the screen as text (this is the default)
  --ansi             prints it with its attributes, as SGR sequences
  --json             prints screen, cursor, title and modes as JSON
  --record FILE      keeps the bytes that the command wrote
  --replay FILE      feeds recorded bytes instead of a command's
  --filter           feeds standard input, and writes the terminal's replies to standard output at once
)";

enum class Format { text, ansi, json };

struct Options {
    int cols = 80;
    int rows = 24;
    int scrollback = 500;
    std::string input;
    std::string wait;
    std::chrono::milliseconds quiet{300};
    std::chrono::milliseconds timeout{10'000};
    Format format = Format::text;
    std::string record;
    std::string replay;
    bool filter = false;
    std::vector<std::string> command;
};

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool parseNumber(std::string_view text, int& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= 0;
}

bool parseSize(std::string_view text, Options& options) {
    const std::size_t by = text.find('x');
    return by != std::string_view::npos && parseNumber(text.substr(0, by), options.cols) &&
           parseNumber(text.substr(by + 1), options.rows);
}

bool parse(const std::vector<std::string>& words, Options& options) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word == "--") {
            options.command.assign(words.begin() + static_cast<std::ptrdiff_t>(i) + 1, words.end());
            break;
        }
        if (word == "--text" || word == "--ansi" || word == "--json") {
            options.format = word == "--ansi" ? Format::ansi : word == "--json" ? Format::json : Format::text;
            continue;
        }
        if (word == "--filter") {
            options.filter = true;
            continue;
        }
        if (++i == words.size()) {
            return false;
        }
        const std::string& value = words[i];
        int number = 0;
        if (word == "--size" && parseSize(value, options)) {
            continue;
        }
        if (word == "--scrollback" && parseNumber(value, options.scrollback)) {
            continue;
        }
        if (word == "--quiet" && parseNumber(value, number)) {
            options.quiet = std::chrono::milliseconds(number);
        } else if (word == "--timeout" && parseNumber(value, number)) {
            options.timeout = std::chrono::milliseconds(number);
        } else if (word == "--input") {
            options.input = contentsOf(value);
        } else if (word == "--wait") {
            options.wait = value;
        } else if (word == "--record") {
            options.record = value;
        } else if (word == "--replay") {
            options.replay = value;
        } else {
            return false;
        }
    }
    return options.filter || !options.replay.empty() || !options.command.empty();
}

std::string quoted(std::string_view text) {
    std::string json = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            json += '\\';
        }
        json += c;
    }
    return json + "\"";
}

std::string ansiRow(const term::Terminal& terminal, const term::BufferLine& line) {
    std::string text;
    term::Attribute last;
    const int length = line.tailBlankCell() == term::PackedCell() ? line.usedLength() : line.size();
    for (int col = 0; col < length; ++col) {
        if (line[col].isSpacer()) {
            continue;
        }
        if (const term::Attribute attribute = terminal.arena().attributeOf(line[col]); attribute != last) {
            text += "\x1B[" + attribute.toSgr() + "m";
            last = attribute;
        }
        terminal.arena().appendText(text, line[col]);
    }
    return last == term::Attribute() ? text : text + "\x1B[m";
}

void print(const term::Terminal& terminal, Format format) {
    const term::Buffer& buffer = terminal.buffer();
    std::string out;
    for (int row = 0; format != Format::json && row < buffer.rows(); ++row) {
        out += (format == Format::ansi ? ansiRow(terminal, buffer.line(row)) : terminal.lineText(row)) + "\n";
    }
    if (format == Format::json) {
        out = "{\n  \"title\": " + quoted(terminal.title()) +
              ",\n  \"cursor\": {\"row\": " + std::to_string(buffer.y()) +
              ", \"column\": " + std::to_string(buffer.x()) +
              ", \"visible\": " + (terminal.modes().cursorVisible ? "true" : "false") +
              "},\n  \"alternate\": " + (terminal.isAlternateActive() ? "true" : "false") + ",\n  \"modes\": [";
        std::string modes;
        for (int mode = 1; mode < 2600; ++mode) {
            if (terminal.decPrivateMode(mode).value_or(false)) {
                modes += (modes.empty() ? "" : ", ") + std::to_string(mode);
            }
        }
        out += modes + "],\n  \"history\": " + std::to_string(buffer.yBase()) + ",\n  \"rows\": [";
        for (int row = 0; row < buffer.rows(); ++row) {
            out += (row == 0 ? "\n    " : ",\n    ") + quoted(terminal.lineText(row));
        }
        out += "\n  ]\n}\n";
    }
    std::fwrite(out.data(), 1, out.size(), stdout);
}

/// The bytes of the child go into the terminal under a lock, on the pipeline's thread; replies go back at once.
class Session final : public term::TerminalDelegate, public term::LocalProcessDelegate {
public:
    explicit Session(const Options& options) : m_options(options), m_terminal(*this, terminalOptions(options)) {}

    int run(const std::shared_ptr<Session>& self) {
        m_process = term::LocalProcess::create(self, {.delivery = term::LocalProcessDelivery::direct});
        m_process->startProcess(
            {.executable = "/usr/bin/env", .args = m_options.command, .environment = environment()});
        std::unique_lock lock(m_mutex);
        const auto deadline = Clock::now() + m_options.timeout;
        m_lastOutput = Clock::now();
        std::string_view input = m_options.input;
        while (!m_hasEnded && Clock::now() < deadline) {
            if (!m_options.wait.empty() && isShown(m_options.wait)) {
                break;
            }
            const auto quietAt = m_lastOutput + m_options.quiet;
            if (Clock::now() >= quietAt) {
                if (!input.empty()) {
                    const std::string_view piece = input.substr(0, input.find('\0'));
                    input.remove_prefix(std::min(piece.size() + 1, input.size()));
                    m_lastOutput = Clock::now();
                    m_process->send({reinterpret_cast<const std::uint8_t*>(piece.data()), piece.size()});
                    continue;
                }
                if (m_options.wait.empty()) {
                    break;
                }
            }
            m_changed.wait_until(lock, std::min(deadline, Clock::now() >= quietAt ? deadline : quietAt));
        }
        const bool found = m_options.wait.empty() || isShown(m_options.wait);
        print(m_terminal, m_options.format);
        if (!m_options.record.empty()) {
            std::ofstream(m_options.record, std::ios::binary) << m_recorded;
        }
        return found ? 0 : 1;
    }

    void replay(std::string_view bytes) {
        m_terminal.feed(bytes);
        print(m_terminal, m_options.format);
    }

private:
    using Clock = std::chrono::steady_clock;

    static term::TerminalOptions terminalOptions(const Options& options) {
        term::TerminalOptions made;
        made.cols = options.cols;
        made.rows = options.rows;
        made.scrollback = options.scrollback;
        return made;
    }
    [[nodiscard]] std::vector<std::string> environment() const {
        std::vector<std::string> made = {"TERM=xterm-256color", "COLORTERM=truecolor"};
        for (char** entry = environ; *entry != nullptr; ++entry) {
            const std::string_view text = *entry;
            if (!text.starts_with("TERM=") && !text.starts_with("COLORTERM=") && !text.starts_with("COLUMNS=") &&
                !text.starts_with("LINES=")) {
                made.emplace_back(text);
            }
        }
        return made;
    }
    [[nodiscard]] bool isShown(const std::string& text) const {
        for (int row = 0; row < m_terminal.rows(); ++row) {
            if (m_terminal.lineText(row).find(text) != std::string::npos) {
                return true;
            }
        }
        return false;
    }

    void send(term::Terminal&, term::Bytes data) override {
        if (m_process) {
            m_process->send(data);
        }
    }
    void dataReceived(std::span<const std::uint8_t> slice) override {
        const std::lock_guard lock(m_mutex);
        m_terminal.feed(slice);
        if (!m_options.record.empty()) {
            m_recorded.append(slice.begin(), slice.end());
        }
        m_lastOutput = Clock::now();
        m_changed.notify_all();
    }
    void processTerminated(term::LocalProcess&, std::optional<int>) override {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
        m_changed.notify_all();
    }
    winsize getWindowSize() override {
        return {static_cast<unsigned short>(m_options.rows), static_cast<unsigned short>(m_options.cols), 0, 0};
    }

    const Options m_options;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    term::Terminal m_terminal;
    std::shared_ptr<term::LocalProcess> m_process;
    Clock::time_point m_lastOutput;
    bool m_hasEnded = false;
    std::string m_recorded;
};

/// A terminal on standard streams, with a window of the size that it is told.
class FilterHost final : public term::TerminalDelegate {
public:
    void send(term::Terminal&, term::Bytes data) override {
        std::fwrite(data.data(), 1, data.size(), stdout);
        std::fflush(stdout);
    }
    std::optional<term::CellSize> cellSizeInPixels(term::Terminal&) override { return term::CellSize{10, 20}; }
    bool allowsTitleReports(term::Terminal&) override { return true; }
    bool allowsResize(term::Terminal&, int, int) override { return true; }
    std::optional<term::WindowAnswer> windowCommand(
        term::Terminal& source, const term::WindowCommand& command) override {
        using Kind = term::WindowCommand::Kind;
        switch (command.kind) {
        case Kind::resizeCells:
            source.resize(
                command.second > 0 ? command.second : source.cols(), command.first > 0 ? command.first : source.rows());
            return {};
        case Kind::resizePixels:
            source.resize(
                command.second > 0 ? command.second / 10 : source.cols(),
                command.first > 0 ? command.first / 20 : source.rows());
            return {};
        case Kind::reportState:
            return term::WindowAnswer{1, 0};
        case Kind::reportPosition:
            return term::WindowAnswer{0, 0};
        case Kind::reportPixelSize:
            return term::WindowAnswer{source.rows() * 20, source.cols() * 10};
        case Kind::reportScreenPixels:
            return term::WindowAnswer{2000, 2000};
        case Kind::reportScreenCells:
            return term::WindowAnswer{100, 200};
        default:
            return {};
        }
    }
};

int filter(const Options& options) {
    FilterHost host;
    term::TerminalOptions terminalOptions;
    terminalOptions.cols = options.cols;
    terminalOptions.rows = options.rows;
    term::Terminal terminal(host, terminalOptions);
    std::vector<char> piece(64 * 1024);
    for (ssize_t size = 0; (size = read(STDIN_FILENO, piece.data(), piece.size())) > 0;) {
        terminal.feed(std::string_view(piece.data(), static_cast<std::size_t>(size)));
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (!parse(words, options)) {
        const bool wantsHelp = !words.empty() && (words[0] == "--help" || words[0] == "-h");
        std::fputs(usage, wantsHelp ? stdout : stderr);
        return wantsHelp ? 0 : 2;
    }
    if (options.filter) {
        return filter(options);
    }
    const auto session = std::make_shared<Session>(options);
    if (!options.replay.empty()) {
        session->replay(contentsOf(options.replay));
        return 0;
    }
    return session->run(session);
}
