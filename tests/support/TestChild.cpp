// Plays a child process: its arguments are verbs, carried out one after the other. None lives longer than ten minutes,
// whatever became of the test that it belongs to.
//
//   print TEXT        writes TEXT; \n \r \t \b \e \\ and \xNN in it stand for what they do in C
//   lines N WIDTH     writes N numbered lines of WIDTH bytes each, line feed included
//   flood WIDTH       the same without end
//   listen PORT       listens on 127.0.0.1 (0: on any free port) and says "listening on http://localhost:<port>/"
//   ignore            ignores SIGTERM from here on
//   close             closes its output
//   background        goes on in a child of its group; the parent exits with 0
//   daemonize         goes on in a session of its own; the parent exits with 0
//   descriptors       writes the numbers of its open descriptors; standard input's file comes first
//   signals           writes the masks of blocked and ignored signals
//   environment NAME  writes NAME=value, or NAME when it is not set
//   ids               writes "own" when it leads its session and group, else "other"
//   await FILE        waits until FILE exists; ends when the folder in which it runs is gone
//   touch FILE        makes FILE
//   hang              waits for a signal
//   exit CODE         ends
//   abort SIGNAL      ends by that signal

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr unsigned longestLife = 600;

void writeAll(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
        if (written <= 0) {
            std::_Exit(99);
        }
        text.remove_prefix(static_cast<size_t>(written));
    }
}

std::string unescaped(std::string_view text) {
    const std::map<char, char> plain{{'n', '\n'}, {'r', '\r'}, {'t', '\t'}, {'b', '\b'}, {'e', '\x1b'}, {'\\', '\\'}};
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            result += text[i];
        } else if (text[++i] == 'x') {
            result += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            result += plain.at(text[i]);
        }
    }
    return result;
}

void writeLines(long count, size_t width) {
    std::string block;
    for (long i = 1; count < 0 || i <= count; ++i) {
        std::string line = std::to_string(i) + ' ';
        line.resize(width - 1, 'x');
        block += line;
        block += '\n';
        if (block.size() > 60000) {
            writeAll(block);
            block.clear();
        }
    }
    writeAll(block);
}

void listenOn(int port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(fd, 5) != 0) {
        std::_Exit(98);
    }
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    writeAll("listening on http://localhost:" + std::to_string(ntohs(address.sin_port)) + "/\n");
}

void continueInChild(bool ownSession) {
    if (::fork() != 0) {
        std::_Exit(0);
    }
    ::alarm(longestLife);
    if (ownSession) {
        ::setsid();
    }
}

void writeDescriptors() {
    char input[64]{};
    (void)!::readlink("/proc/self/fd/0", input, sizeof input - 1);
    std::string text = input;
    for (int fd = 1; fd < 1024; ++fd) {
        text += ::fcntl(fd, F_GETFD) >= 0 ? ' ' + std::to_string(fd) : "";
    }
    writeAll(text + '\n');
}

void writeSignals() {
    std::FILE* status = std::fopen("/proc/self/status", "r");
    char line[256];
    while (std::fgets(line, sizeof line, status) != nullptr) {
        if (std::strncmp(line, "SigBlk", 6) == 0 || std::strncmp(line, "SigIgn", 6) == 0) {
            // The C library keeps the signals 32 and 33 to itself.
            const unsigned long mask = std::strtoul(line + 7, nullptr, 16) & 0x7fffffffUL;
            writeAll(std::string(line, 7) + std::to_string(mask) + '\n');
        }
    }
    std::fclose(status);
}

} // namespace

int main(int argc, char** argv) {
    ::alarm(longestLife);
    std::vector<std::string> words(argv + 1, argv + argc);
    size_t next = 0;
    const auto word = [&]() -> const std::string& { return words.at(next++); };
    const std::map<std::string, std::function<void()>> verbs{
        {"print", [&] { writeAll(unescaped(word())); }},
        {"lines",
         [&] {
             const long count = std::stol(word());
             writeLines(count, std::stoul(word()));
         }},
        {"flood", [&] { writeLines(-1, std::stoul(word())); }},
        {"listen", [&] { listenOn(std::stoi(word())); }},
        {"ignore", [] { std::signal(SIGTERM, SIG_IGN); }},
        {"close",
         [] {
             ::close(STDOUT_FILENO);
             ::close(STDERR_FILENO);
         }},
        {"background", [] { continueInChild(false); }},
        {"daemonize", [] { continueInChild(true); }},
        {"descriptors", writeDescriptors},
        {"signals", writeSignals},
        {"environment",
         [&] {
             const std::string& name = word();
             const char* value = std::getenv(name.c_str());
             writeAll(name + (value != nullptr ? '=' + std::string(value) : "") + '\n');
         }},
        {"ids", [] { writeAll(::getsid(0) == ::getpid() && ::getpgrp() == ::getpid() ? "own\n" : "other\n"); }},
        {"await",
         [&] {
             const std::string& file = word();
             char folder[4096];
             while (::access(file.c_str(), F_OK) != 0) {
                 if (::getcwd(folder, sizeof folder) == nullptr) {
                     std::_Exit(97);
                 }
                 ::usleep(2000);
             }
         }},
        {"touch", [&] { ::close(::open(word().c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600)); }},
        {"hang",
         [] {
             for (;;) {
                 ::pause();
             }
         }},
        {"exit", [&] { std::_Exit(std::stoi(word())); }},
        {"abort", [&] { ::raise(std::stoi(word())); }},
    };
    while (next < words.size()) {
        verbs.at(word())();
    }
    return 0;
}
