#include "OrvCore/CommandBuilder.h"
#include "OrvTerminal/TerminalSession.h"
#include "OrvTerminal/View/TerminalView.h"

#include <QClipboard>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QMimeData>

#include <algorithm>
#include <utility>

namespace orv {
namespace {

constexpr int shownLength = 40;

/// A copy, whatever is proposed: an editor deletes what it has moved elsewhere.
void answerDrag(QDropEvent& event) {
    event.setDropAction(Qt::CopyAction);
    event.setAccepted(event.mimeData()->hasUrls() || event.mimeData()->hasText());
}

} // namespace

bool TerminalView::hasSelection() const {
    const auto range = m_session.terminal().selection().range();
    return range && range->start != range->end;
}

QString TerminalView::selectedText() const {
    const term::Terminal& terminal = m_session.terminal();
    return QString::fromStdString(terminal.selection().text(terminal.buffer()));
}

void TerminalView::copy() {
    if (const QString text = selectedText(); !text.isEmpty()) {
        QGuiApplication::clipboard()->setText(text);
    }
}

void TerminalView::selectAll() {
    term::Terminal& terminal = m_session.terminal();
    const auto first = static_cast<std::int64_t>(terminal.buffer().trimmedCount());
    terminal.startSelection({first, 0}, term::TextSelection::Unit::character);
    terminal.extendSelection({first + terminal.buffer().lineCount() - 1, terminal.cols()});
}

void TerminalView::selectOutput() {
    term::Terminal& terminal = m_session.terminal();
    const term::Buffer& buffer = terminal.buffer();
    const auto first = static_cast<std::int64_t>(buffer.trimmedCount());
    const auto end = first + buffer.lineCount();
    // From the top of the view down where the person looks at the history, else from the newest line up.
    const bool isScrolled = buffer.yDisp() < buffer.yBase();
    const int step = isScrolled ? 1 : -1;
    for (std::int64_t line = isScrolled ? firstLine() : end - 1; line >= first && line < end; line += step) {
        const term::BufferLine& cells = buffer.lineAt(static_cast<int>(line - first));
        const auto written = cells.usedCells();
        const auto begin = std::ranges::find_if_not(written, &term::PackedCell::isBlank);
        const bool isOutput =
            begin != written.end() && begin->semanticCode() == static_cast<std::uint8_t>(term::SemanticContent::output);
        if (!isOutput) {
            continue;
        }
        const int col = static_cast<int>(begin - written.begin());
        if (const auto range = term::semanticRangeAt(buffer, {line, col})) {
            terminal.startSelection(range->start, term::TextSelection::Unit::character);
            terminal.extendSelection(range->end);
        }
        return;
    }
    tellOfMissingMarks();
}

int TerminalView::pasteLines() const {
    // Behind the last line end nothing is to be run.
    const QString& text = m_pendingPaste;
    return text.isEmpty() ? 0 : static_cast<int>(text.count(u'\n')) + (text.endsWith(u'\n') ? 0 : 1);
}

void TerminalView::paste() {
    paste(QGuiApplication::clipboard()->text());
}

void TerminalView::paste(const QString& text) {
    QString lines = text;
    lines.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    // A shell that brackets pastes waits for Return; another one would run each line as it comes.
    const bool isBareShell =
        m_session.isAlive() && !m_session.terminal().modes().bracketedPaste && !m_session.hasForegroundProgram();
    if (lines.contains(u'\n') && isBareShell) {
        m_pendingPaste = lines;
        Q_EMIT pasteQuestionChanged();
    } else {
        pasteWithoutQuestion(lines);
    }
}

void TerminalView::answerPaste(bool isWanted) {
    const QString text = std::exchange(m_pendingPaste, {});
    Q_EMIT pasteQuestionChanged();
    if (isWanted) {
        pasteWithoutQuestion(text);
    }
}

void TerminalView::pasteWithoutQuestion(const QString& text) {
    if (m_session.isAlive() && m_session.terminal().paste(text.toStdString())) {
        typed();
    }
}

QString TerminalView::programsCopy() const {
    const QString copy = m_session.programsCopy();
    QString shown = copy.left(2 * shownLength);
    std::ranges::replace_if(shown, [](QChar letter) { return !letter.isPrint(); }, u' ');
    shown = shown.simplified();
    const bool isCut = shown.size() > shownLength || copy.size() > 2 * shownLength;
    const bool isBlank = shown.isEmpty() && !copy.isEmpty();
    return isCut || isBlank ? shown.left(shownLength) + u'…' : shown;
}

void TerminalView::answerProgramsCopy(bool isWanted) const {
    m_session.answerProgramsCopy(isWanted);
}

void TerminalView::dragEnterEvent(QDragEnterEvent* event) {
    answerDrag(*event);
}

void TerminalView::dragMoveEvent(QDragMoveEvent* event) {
    answerDrag(*event);
}

void TerminalView::dropEvent(QDropEvent* event) {
    QStringList words;
    for (const QUrl& url : event->mimeData()->urls()) {
        words.append(CommandBuilder::word(url.isLocalFile() ? url.toLocalFile() : url.toString()));
    }
    if (words.isEmpty()) {
        paste(event->mimeData()->text());
    } else {
        pasteWithoutQuestion(words.join(u' ') + u' ');
    }
    answerDrag(*event);
    forceActiveFocus(Qt::MouseFocusReason);
}

} // namespace orv
