// termdump: a program under the terminal engine, without a window.

#include "KeyNames.h"
#include "ScreenDump.h"
#include "TermEngine/LocalProcess.h"
#include "TermEngine/Terminal.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <unistd.h>

namespace {

constexpr const char* usage = R"(usage: termdump [options] -- COMMAND [ARGUMENT...]
       termdump --filter [--size 80x24]
       termdump --replay FILE [options]

Runs a command on a pseudo-terminal and prints the screen that it made.

  --size COLSxROWS   of the terminal (80x24)
  --scrollback N     lines of history (500)
  --input FILE       sent to the command in the pieces between NUL bytes, one each time that it has been quiet;
                     "-" is standard input
  --keys NAMES       then types these, parted by blanks ("a", "enter", "ctrl+up", "f1", "kp7"), one each time that it
                     has been quiet, as the terminal's modes have them
  --resize COLSxROWS to this size, when all of that was sent and the command is quiet; may be given again
  --wait TEXT        ends when the text is on the screen
  --quiet MS         ends when the command has written nothing for so long (300)
  --timeout MS       ends at the latest then (10000)
  --text             prints the screen as text (this is the default)
  --ansi             prints it with its attributes, as SGR sequences
  --json             prints screen, attributes, links, cursor, title and modes as JSON
  --record FILE      keeps the bytes that the command wrote, and in FILE.sizes from which byte on the terminal had
                     which size
  --replay FILE      feeds recorded bytes instead of a command's, in the sizes of FILE.sizes where that is there; "-" is
                     standard input
  --filter           feeds standard input, and writes the terminal's replies to standard output at once
)";

enum class Format { text, ansi, json };

struct Size {
    int cols = 80;
    int rows = 24;
};

struct Options {
    Size size;
    std::vector<Size> resizes;
    std::vector<std::string> keys;
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

/// Tells of it; the exit code.
int failed(std::string_view doing, const std::string& path) {
    const std::string reason = std::generic_category().message(errno);
    std::cerr << "termdump: can't " << doing << ' ' << path << ": " << reason << '\n';
    return 1;
}

/// Nothing for what can't be read.
std::optional<std::string> contentsOf(const std::string& path) {
    if (path == "-") {
        return std::string(std::istreambuf_iterator<char>(std::cin), {});
    }
    std::ifstream file(path, std::ios::binary);
    std::ostringstream contents;
    // A file of no bytes is no error; a folder can be opened, and not read.
    if (!file || (file.peek() != std::ifstream::traits_type::eof() && !(contents << file.rdbuf())) || file.bad()) {
        return {};
    }
    return contents.str();
}

bool parseNumber(std::string_view text, int& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= 0;
}

bool parseSize(std::string_view text, Size& size) {
    const std::size_t by = text.find('x');
    return by != std::string_view::npos && parseNumber(text.substr(0, by), size.cols) &&
           parseNumber(text.substr(by + 1), size.rows);
}

bool parseKeys(const std::string& text, std::vector<std::string>& keys) {
    std::istringstream names(text);
    for (std::string name; names >> name;) {
        if (!term::keyNamed(name)) {
            return false;
        }
        keys.push_back(name);
    }
    return true;
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
        if (word == "--size" && parseSize(value, options.size)) {
            continue;
        }
        if (Size size; word == "--resize" && parseSize(value, size)) {
            options.resizes.push_back(size);
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
            options.input = value;
        } else if (word == "--keys" && parseKeys(value, options.keys)) {
            continue;
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
    if (options.filter) {
        return options.record.empty() && options.replay.empty() && options.command.empty();
    }
    return !options.replay.empty() || !options.command.empty();
}

void print(const term::Terminal& terminal, Format format) {
    const std::string out = format == Format::json   ? term::dumpJson(terminal)
                            : format == Format::ansi ? term::dumpAnsi(terminal)
                                                     : term::dumpText(terminal);
    std::fwrite(out.data(), 1, out.size(), stdout);
}

/// The size of the terminal from a byte of a recording on.
struct SizeChange {
    std::size_t offset = 0;
    Size size;
};

std::string sizesFile(const std::string& recording) {
    return recording + ".sizes";
}

[[nodiscard]] bool writeSizes(const std::string& recording, const std::vector<SizeChange>& changes) {
    std::ofstream file(sizesFile(recording));
    for (const SizeChange& change : changes) {
        file << change.offset << ' ' << change.size.cols << 'x' << change.size.rows << '\n';
    }
    return static_cast<bool>(file.flush());
}

std::vector<SizeChange> readSizes(const std::string& recording) {
    std::ifstream file(sizesFile(recording));
    std::vector<SizeChange> changes;
    SizeChange change;
    for (std::string size; file >> change.offset >> size && parseSize(size, change.size);) {
        changes.push_back(change);
    }
    return changes;
}

/// The bytes of the child go into the terminal under a lock, on the pipeline's thread; replies go back at once.
class Session final : public term::TerminalDelegate, public term::LocalProcessDelegate {
public:
    explicit Session(const Options& options) : m_options(options), m_terminal(*this, terminalOptions(options)) {}

    /// `input` is what the command gets, in the pieces between NUL bytes.
    int run(const std::shared_ptr<Session>& self, std::string_view input) {
        term::LocalProcess::Configuration configuration;
        configuration.directDelivery = true;
        configuration.onLaunchFailure = [weak = std::weak_ptr(self)](const auto& error) {
            if (const auto session = weak.lock()) {
                session->launchFailed(error);
            }
        };
        m_process = term::LocalProcess::create(self, std::move(configuration));
        m_process->startProcess(
            {.executable = "/usr/bin/env", .args = m_options.command, .environment = environment()});
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_failure || m_process->phase() != term::LocalProcessPhase::notStarted; });
        const auto deadline = Clock::now() + m_options.timeout;
        m_lastOutput = Clock::now();
        m_sizes.push_back({0, m_options.size});
        std::size_t typed = 0;
        std::size_t resized = 0;
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
                // Before it has written something, a program has not said yet how it wants them.
                const bool isAwaited = typed < m_options.keys.size() && !m_hasWritten;
                if (typed < m_options.keys.size() && m_hasWritten) {
                    m_lastOutput = Clock::now();
                    m_terminal.sendKey(*term::keyNamed(m_options.keys[typed++]));
                    continue;
                }
                if (!isAwaited && resized < m_options.resizes.size()) {
                    resize(m_options.resizes[resized++]);
                    continue;
                }
                if (!isAwaited && m_options.wait.empty()) {
                    break;
                }
            }
            m_changed.wait_until(lock, std::min(deadline, Clock::now() >= quietAt ? deadline : quietAt));
        }
        if (m_failure) {
            std::cerr << "termdump: " << m_failure->text() << '\n';
            return 1;
        }
        const bool found = m_options.wait.empty() || isShown(m_options.wait);
        print(m_terminal, m_options.format);
        if (!m_options.record.empty()) {
            std::ofstream file(m_options.record, std::ios::binary);
            if (!(file << m_recorded).flush() || !writeSizes(m_options.record, m_sizes)) {
                return failed("write", m_options.record);
            }
        }
        return found ? 0 : 1;
    }

    void replay(std::string_view bytes, const std::vector<SizeChange>& changes) {
        std::size_t fed = 0;
        for (const SizeChange& change : changes) {
            const std::size_t end = std::clamp(change.offset, fed, bytes.size());
            m_terminal.feed(bytes.substr(fed, end - fed));
            m_terminal.resize(change.size.cols, change.size.rows);
            fed = end;
        }
        m_terminal.feed(bytes.substr(fed));
        print(m_terminal, m_options.format);
    }

private:
    using Clock = std::chrono::steady_clock;

    static term::TerminalOptions terminalOptions(const Options& options) {
        term::TerminalOptions made;
        made.cols = options.size.cols;
        made.rows = options.size.rows;
        made.scrollback = options.scrollback;
        return made;
    }
    [[nodiscard]] static winsize windowSize(const Size& size) {
        return {static_cast<unsigned short>(size.rows), static_cast<unsigned short>(size.cols), 0, 0};
    }
    /// Under the lock.
    void resize(const Size& size) {
        m_terminal.resize(size.cols, size.rows);
        m_sizes.push_back({m_recorded.size(), size});
        m_process->updateWindowSize(windowSize(size));
        m_lastOutput = Clock::now();
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
    void reply(term::Terminal&, term::Bytes data) override {
        if (m_process) {
            m_process->send(data, term::TerminalIOPipeline::SendOrigin::reply);
        }
    }
    void dataReceived(std::span<const std::uint8_t> slice) override {
        const std::lock_guard lock(m_mutex);
        m_terminal.feed(slice);
        if (!m_options.record.empty()) {
            m_recorded.append(slice.begin(), slice.end());
        }
        m_lastOutput = Clock::now();
        m_hasWritten = true;
        m_changed.notify_all();
    }
    void launchFailed(const term::LocalProcessError& error) {
        const std::lock_guard lock(m_mutex);
        m_failure = error;
        m_hasEnded = true;
        m_changed.notify_all();
    }
    void processTerminated(term::LocalProcess&, std::optional<int>) override {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
        m_changed.notify_all();
    }
    winsize getWindowSize() override { return windowSize(m_options.size); }

    const Options m_options;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    term::Terminal m_terminal;
    std::shared_ptr<term::LocalProcess> m_process;
    Clock::time_point m_lastOutput;
    bool m_hasWritten = false;
    bool m_hasEnded = false;
    std::optional<term::LocalProcessError> m_failure;
    std::string m_recorded;
    std::vector<SizeChange> m_sizes;
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
    terminalOptions.cols = options.size.cols;
    terminalOptions.rows = options.size.rows;
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
    const std::string& source = options.replay.empty() ? options.input : options.replay;
    const std::optional<std::string> bytes = source.empty() ? std::string() : contentsOf(source);
    if (!bytes) {
        return failed("read", source);
    }
    const auto session = std::make_shared<Session>(options);
    if (!options.replay.empty()) {
        session->replay(*bytes, readSizes(options.replay));
        return 0;
    }
    return session->run(session, *bytes);
}
