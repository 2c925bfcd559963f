#include "OrvUI/FileContent.h"

#include "OrvCore/Paths.h"
#include "OrvCore/RegularFile.h"
#include "OrvUI/CodeHighlighter.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("FileContent", text);
}

QString sizeText(qint64 bytes) {
    if (bytes < 1024) {
        return bytes == 1 ? tr("1 byte") : tr("%1 bytes").arg(bytes);
    }
    double size = static_cast<double>(bytes) / 1024;
    qsizetype unit = 0;
    const QStringList units{u"KB"_s, u"MB"_s, u"GB"_s, u"TB"_s};
    while (size >= 1024 && unit + 1 < units.size()) {
        size /= 1024;
        ++unit;
    }
    return QString::number(size, 'f', 1) + u' ' + units[unit];
}

/// Text has no zero bytes, and hardly any other control characters.
bool isText(const QByteArray& bytes) {
    constexpr qsizetype looked = 8192;
    const QByteArrayView head = QByteArrayView(bytes).first(std::min(looked, bytes.size()));
    const auto isOdd = [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 32 && byte != '\t' && byte != '\n' && byte != '\r' && byte != '\f' && byte != 27;
    };
    return !head.contains('\0') && std::ranges::count_if(head, isOdd) * 32 <= head.size();
}

QString shownLine(QByteArrayView bytes) {
    const bool isCut = bytes.size() > FileContent::longestLine;
    if (bytes.endsWith('\r')) {
        bytes.chop(1);
    }
    QString shown = QString::fromUtf8(bytes.first(std::min(bytes.size(), FileContent::longestLine)));
    for (QChar& letter : shown) {
        if (letter < u' ' && letter != u'\t') {
            letter = QChar(static_cast<char16_t>(u'\u2400' + letter.unicode()));
        }
    }
    return isCut ? shown + u'\u2026' : shown;
}

void takeLines(const QByteArray& bytes, const QString& path, FileContent& content) {
    const CodeLanguage* language = CodeLanguage::ofFile(path);
    CodeState state = 0;
    qsizetype from = bytes.startsWith("\xef\xbb\xbf") ? 3 : 0;
    while (from < bytes.size()) {
        qsizetype end = bytes.indexOf('\n', from);
        end = end < 0 ? bytes.size() : end;
        content.lines.append(shownLine(QByteArrayView(bytes).sliced(from, end - from)));
        QList<int> numbers;
        if (language != nullptr) {
            for (const CodeSpan& span : highlightLine(*language, content.lines.last(), state)) {
                numbers << span.start << span.length << static_cast<int>(span.token);
            }
        }
        content.spans.append(numbers);
        from = end + 1;
    }
}

} // namespace

FileContent FileContent::read(const QString& path) {
    FileContent content;
    const QFileInfo info(path);
    if (info.isSymLink()) {
        content.note = tr("A symbolic link to %1.").arg(Paths::shortened(info.symLinkTarget()));
    }
    if (!info.exists()) {
        content.note = info.isSymLink() ? tr("A symbolic link to %1, which is not there.").arg(info.symLinkTarget())
                                        : tr("This file is gone.");
        return content;
    }
    // Neither a folder nor what one could wait for without end.
    if (!info.isFile()) {
        content.note = info.isDir() ? content.note : tr("This is no ordinary file.");
        return content;
    }
    content.facts = sizeText(info.size());
    if (info.size() > largest) {
        content.note = tr("This file is %1 large. Files up to %2 are shown.").arg(content.facts, sizeText(largest));
        return content;
    }
    const auto read = RegularFile::prefix(path, largest);
    if (!read) {
        content.note = tr("It can't be read: %1.").arg(qt_error_string(errno));
        return content;
    }
    const QByteArray& bytes = *read;
    if (bytes.isEmpty()) {
        content.note = tr("This file is empty.");
    } else if (!isText(bytes)) {
        content.note = tr("This is a binary file.");
    } else {
        takeLines(bytes, info.isSymLink() ? info.symLinkTarget() : path, content);
        const auto count = content.lines.size();
        content.facts += u" · "_s + (count == 1 ? tr("1 line") : tr("%1 lines").arg(count));
    }
    return content;
}

} // namespace orv
