#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

namespace orv {

/// Lines of code, and words with code in them, in the colours of the theme, as QML's StyledText. A QML singleton.
class CodeText : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// `spans` are start, length and CodeToken of each coloured piece, one behind the other. A tab goes to the next
    /// multiple of four columns. `dark` and `theme` are there so that a binding follows them.
    [[nodiscard]] Q_INVOKABLE static QString styled(const QString& text, const QList<int>& spans, bool dark, int theme);
    /// `text` with what `letters` name by their places in the colour of the accent, strong: what a search matched.
    [[nodiscard]] Q_INVOKABLE static QString matched(
        const QString& text, const QList<int>& letters, bool dark, int theme);
    /// What an agent says, with the code in it in the colour of text and what it stresses strong. Of Markdown it knows
    /// code in a line and between fences, and `**`; the rest stands as it came.
    [[nodiscard]] Q_INVOKABLE static QString prose(const QString& text, bool dark, int theme);
};

} // namespace orv
