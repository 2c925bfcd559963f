#pragma once

#include "OrvTerminal/View/TerminalStyle.h"

#include <QtQmlIntegration>

class QJSEngine;
class QQmlEngine;

namespace orv {

/// The style of all terminals, in the colours of the theme. A QML singleton; lives on the main thread.
class TerminalLook : public orv::TerminalStyle {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit TerminalLook(QObject* parent);

    /// The one of the process, made when it is first asked for; the application object owns it.
    [[nodiscard]] static TerminalLook* instance();
    /// For QML.
    static TerminalLook* create(QQmlEngine* engine, QJSEngine* scriptEngine);

private:
    void follow();
};

} // namespace orv
