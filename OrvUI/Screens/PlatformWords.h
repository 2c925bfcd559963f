#pragma once

#include <QTranslator>

namespace orv {

/// The platform's own words where a text names the Mac's: what is no translation of a language. Installed on Linux;
/// whatever it does not know stays as it is.
class PlatformWords : public QTranslator {
    Q_OBJECT
public:
    using QTranslator::QTranslator;

    [[nodiscard]] QString translate(
        const char* context, const char* sourceText, const char* disambiguation, int n) const override;
    [[nodiscard]] bool isEmpty() const override { return false; }
};

} // namespace orv
