#include "CliSupport.h"
#include "OrvProcess/PortParser.h"
#include "TextLayout.h"

#include <QJsonObject>

#include <cerrno>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr qsizetype readBytes = 64 * 1024;

/// Says of each line which port it announces, as text or as an element of one JSON array.
class PortLines {
public:
    PortLines(Stream& out, bool json) : m_out(out), m_json(json) {}

    void add(QByteArrayView utf8) {
        const QString line = QString::fromUtf8(utf8.endsWith('\r') ? utf8.chopped(1) : utf8);
        const std::optional<int> port = PortParser::port(line);
        if (m_json) {
            m_pending += m_isFirst ? "[\n" : ",\n";
            m_pending +=
                compactJson(QJsonObject{{u"line"_s, line}, {u"port"_s, port ? QJsonValue(*port) : QJsonValue()}});
        } else {
            const QString number = port ? QString::number(*port) : u"-"_s;
            m_pending +=
                painted(number.rightJustified(5), port ? Style::green : Style::dim, m_out.hasColor()).toUtf8() + "  " +
                safeOutputLine(line, m_out.hasColor()).toUtf8() + '\n';
        }
        m_isFirst = false;
    }
    void flush() { m_out.write(std::exchange(m_pending, {})); }
    void finish() {
        if (m_json) {
            m_pending += m_isFirst ? "[]\n" : "\n]\n";
        }
        flush();
    }

private:
    Stream& m_out;
    bool m_json;
    bool m_isFirst = true;
    QByteArray m_pending;
};

QFuture<int> ports(Invocation& call) {
    if (::isatty(STDIN_FILENO) == 1) {
        call.note(u"Reading lines from the keyboard; Ctrl-D ends them."_s);
    }
    PortLines lines(call.console.out, call.json);
    QByteArray rest;
    QByteArray block(readBytes, Qt::Uninitialized);
    while (!call.console.out.isClosed()) {
        const ssize_t count = ::read(STDIN_FILENO, block.data(), static_cast<size_t>(block.size()));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return QtFuture::makeReadyFuture(
                call.failure(u"standard input can't be read: "_s + qt_error_string(errno)));
        }
        if (count == 0) {
            break;
        }
        const qsizetype searchFrom = rest.size();
        rest.append(block.constData(), count);
        qsizetype start = 0;
        for (qsizetype end = rest.indexOf('\n', searchFrom); end >= 0; end = rest.indexOf('\n', start)) {
            lines.add(QByteArrayView(rest).sliced(start, end - start));
            start = end + 1;
        }
        rest.remove(0, start);
        lines.flush();
    }
    if (!rest.isEmpty()) {
        lines.add(rest);
    }
    lines.finish();
    return QtFuture::makeReadyFuture(int(exitOk));
}

} // namespace

Command portsCommand() {
    return {
        u"ports"_s,
        u"reads lines and says which port each announces"_s,
        u"Reads a server's output from standard input and prints each line with the port that it announces, or \"-\".\n"
        "This is how a running service's address is found in its output."_s,
        {{{}, {}, 0, 0, u"reads standard input"_s, {}, ports}},
        {{u"npm run dev 2>&1 | orvlauncher ports"_s, u"the ports in a server's own words"_s},
         {u"orvlauncher ports --json < server.log | jq '[.[].port | numbers] | unique'"_s,
          u"every port that a log speaks of"_s}}};
}

} // namespace orv
