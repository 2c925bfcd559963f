#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

namespace orv {

/// Lines of code in the colours of the theme, as QML's StyledText. A QML singleton.
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
};

} // namespace orv
