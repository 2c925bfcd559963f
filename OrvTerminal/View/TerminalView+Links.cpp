#include "OrvTerminal/TerminalSession.h"
#include "OrvTerminal/View/TerminalView.h"
#include "TermEngine/OscPayloads.h"
#include "TermEngine/TextRange.h"

#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// Those under the fingers first.
constexpr QStringView letters = u"asdfjklghqwertyuiopzxcvbnm";

} // namespace

/// A line with all that soft wraps join to it, and where each of its characters stands.
struct TerminalView::WrappedText {
    int endIndex = 0; ///< of the line behind it
    QString text;
    std::vector<term::TextPlace> places; ///< one a UTF-16 unit, and one for the end
};

TerminalView::WrappedText TerminalView::wrappedText(int index) const {
    const term::Buffer& buffer = m_session.terminal().buffer();
    const auto firstLine = static_cast<std::int64_t>(buffer.trimmedCount());
    constexpr int mostRows = 50;
    int first = index;
    while (first > 0 && index - first < mostRows && buffer.lineAt(first).isWrapped()) {
        --first;
    }
    WrappedText wrapped;
    int at = first;
    do {
        const term::BufferLine& line = buffer.lineAt(at);
        const int length = term::textLength(buffer, at);
        for (int column = 0; column < length; ++column) {
            if (line[column].isSpacer()) {
                continue;
            }
            char32_t memory = 0;
            const std::u32string_view scalars = buffer.cellArena().scalarValues(line[column], memory);
            const QString character =
                scalars.empty() ? u" "_s : QString::fromUcs4(scalars.data(), static_cast<qsizetype>(scalars.size()));
            wrapped.text += character;
            wrapped.places.insert(
                wrapped.places.end(), static_cast<size_t>(character.size()), term::TextPlace{firstLine + at, column});
        }
        ++at;
    } while (at < buffer.lineCount() && at - first < mostRows && buffer.lineAt(at).isWrapped());
    wrapped.places.push_back({firstLine + at - 1, buffer.cols()});
    wrapped.endIndex = at;
    return wrapped;
}

/// The link that a program has put under the text of a cell, over soft wraps.
TerminalView::Hovered TerminalView::namedLink(int index, int column) const {
    const term::Terminal& terminal = m_session.terminal();
    const term::Buffer& buffer = terminal.buffer();
    const term::TinyAtom atom = buffer.lineAt(index)[column].payload();
    const auto isLinked = [&](int row, int at) { return buffer.lineAt(row)[at].payload() == atom; };
    int firstRow = index;
    int first = column;
    while (true) {
        if (first > 0 && isLinked(firstRow, first - 1)) {
            --first;
        } else if (const int last = firstRow > 0 ? term::textLength(buffer, firstRow - 1) - 1 : 0;
                   last >= 0 && first == 0 && firstRow > 0 && buffer.lineAt(firstRow).isWrapped() &&
                   isLinked(firstRow - 1, last)) {
            --firstRow;
            first = last;
        } else {
            break;
        }
    }
    int endRow = index;
    int end = column + 1;
    while (true) {
        const int length = term::textLength(buffer, endRow);
        if (end < length && isLinked(endRow, end)) {
            ++end;
        } else if (
            end >= length && endRow + 1 < buffer.lineCount() && buffer.lineAt(endRow + 1).isWrapped() &&
            isLinked(endRow + 1, 0)) {
            ++endRow;
            end = 1;
        } else {
            break;
        }
    }
    const std::string_view url = terminal.linkUrl(atom);
    TextLink link;
    link.url = QString::fromUtf8(url.data(), static_cast<qsizetype>(url.size()));
    const auto oldest = static_cast<std::int64_t>(buffer.trimmedCount());
    return Hovered{link, oldest + firstRow, first, oldest + endRow, end};
}

/// Nothing for what looks like a file and is none.
std::optional<TerminalView::Hovered> TerminalView::writtenLink(TextLink link, const WrappedText& text) const {
    if (link.url.isEmpty()) {
        QString path = link.path;
        if (path.startsWith(u"~/")) {
            path = QDir::homePath() + path.sliced(1);
        }
        const auto report = term::parseDirectoryReport(m_session.terminal().hostCurrentDirectory());
        const QString folder = report ? QString::fromStdString(report->path) : m_session.directory().toLocalFile();
        const QFileInfo file(QDir(folder), path);
        if (!file.exists()) {
            return {};
        }
        link.path = file.absoluteFilePath();
    }
    const term::TextPlace first = text.places[static_cast<size_t>(link.first)];
    const term::TextPlace last = text.places[static_cast<size_t>(link.end - 1)];
    return Hovered{link, first.line, first.col, last.line, last.col + 1};
}

std::optional<TerminalView::Hovered> TerminalView::linkUnder(const Cell& cell) const {
    const term::Buffer& buffer = m_session.terminal().buffer();
    const int index = buffer.yDisp() + cell.row;
    if (buffer.lineAt(index)[cell.column].payload() != 0) {
        return namedLink(index, cell.column);
    }
    const WrappedText wrapped = wrappedText(index);
    const auto at = std::ranges::find(wrapped.places, placeAt(cell));
    const std::optional<TextLink> link = linkAt(wrapped.text, at - wrapped.places.begin());
    return link ? writtenLink(*link, wrapped) : std::nullopt;
}

/// As one reads them.
std::vector<TerminalView::Hovered> TerminalView::linksInView() const {
    const term::Buffer& buffer = m_session.terminal().buffer();
    const int top = buffer.yDisp();
    std::vector<Hovered> links;
    for (int index = top; index < top + buffer.rows(); ++index) {
        const term::BufferLine& line = buffer.lineAt(index);
        for (int column = 0; column < line.size(); ++column) {
            if (line[column].payload() == 0) {
                continue;
            }
            Hovered link = namedLink(index, column);
            const std::int64_t here = firstLine() + index - top;
            if (link.line == here || index == top) {
                // Of one that begins above the view, what can be seen of it.
                link.first = link.line == here ? link.first : 0;
                link.line = here;
                links.push_back(link);
            }
            column = (link.endLine == here ? link.end : line.size()) - 1;
        }
    }
    for (int index = top; index < top + buffer.rows();) {
        const WrappedText text = wrappedText(index);
        for (const TextLink& link : linksIn(text.text)) {
            const std::optional<Hovered> found = writtenLink(link, text);
            // The words of a link that a program has named may be an address too.
            const auto hides = [&](const Hovered& named) {
                return std::pair(found->line, found->first) < std::pair(named.endLine, named.end) &&
                       std::pair(named.line, named.first) < std::pair(found->endLine, found->end);
            };
            const bool isInView = found && found->line >= firstLine() && found->line < firstLine() + buffer.rows();
            if (isInView && std::ranges::none_of(links, hides)) {
                links.push_back(*found);
            }
        }
        index = text.endIndex;
    }
    std::ranges::sort(links, {}, [](const Hovered& link) { return std::pair(link.line, link.first); });
    return links;
}

void TerminalView::chooseLink() {
    m_keyboardSelection->stop(KeyboardSelection::Keep::no);
    m_choosesLink = true;
    m_links = linksInView();
    m_typedLetters.clear();
    updateInputMethod(Qt::ImEnabled);
    changed();
    Q_EMIT linkHintsChanged();
}

void TerminalView::stopChoosing() {
    if (std::exchange(m_choosesLink, false)) {
        m_links.clear();
        updateInputMethod(Qt::ImEnabled);
        changed();
        Q_EMIT linkHintsChanged();
    }
}

/// One letter each, or two where there are more links than letters.
QString TerminalView::lettersOf(size_t link) const {
    const auto count = static_cast<size_t>(letters.size());
    const auto at = [&](size_t place) { return letters[static_cast<qsizetype>(place % count)]; };
    return m_links.size() <= count ? QString(at(link)) : QString(at(link / count)) + at(link);
}

QVariantList TerminalView::linkHints() const {
    QVariantList hints;
    for (size_t link = 0; link < m_links.size(); ++link) {
        const QString word = lettersOf(link);
        const std::int64_t row = m_links[link].line - firstLine();
        if (word.startsWith(m_typedLetters) && row >= 0 && row < rows()) {
            const QPointF place = placeOf(m_links[link].first, static_cast<int>(row));
            hints.append(
                QVariant::fromValue(LinkHint{word.sliced(m_typedLetters.size()), m_links[link].target(), place}));
        }
    }
    return hints;
}

void TerminalView::typeLetter(const QKeyEvent& event) {
    if (event.key() == Qt::Key_Escape) {
        stopChoosing();
        return;
    }
    if (event.key() == Qt::Key_Backspace) {
        m_typedLetters.chop(1);
        Q_EMIT linkHintsChanged();
        return;
    }
    const QString typed = m_typedLetters + event.text().toLower();
    for (size_t link = 0; link < m_links.size() && !event.text().isEmpty(); ++link) {
        const QString word = lettersOf(link);
        if (word == typed) {
            const Hovered chosen = m_links[link];
            stopChoosing();
            if (event.modifiers().testFlag(Qt::ShiftModifier)) {
                QGuiApplication::clipboard()->setText(chosen.target());
            } else {
                activate(chosen.link);
            }
            return;
        }
        if (word.startsWith(typed)) {
            m_typedLetters = typed;
            Q_EMIT linkHintsChanged();
            return;
        }
    }
}

void TerminalView::activate(const TextLink& link) {
    if (link.url.isEmpty()) {
        Q_EMIT fileActivated(link.path, link.line, link.column);
    } else {
        Q_EMIT linkActivated(QUrl(link.url));
    }
}

} // namespace orv
