#pragma once

#include <QString>
#include <QStringView>

#include <optional>
#include <vector>

namespace orv {

/// Something in a line of text that can be opened.
struct TextLink {
    qsizetype first = 0; ///< within the text; the end is excluded
    qsizetype end = 0;
    QString url{};  ///< of an address; else empty
    QString path{}; ///< of a file as it is written, without its line
    int line = 0;   ///< 0: none is named
    int column = 0;
    bool operator==(const TextLink&) const = default;
};

/// Addresses (http, https, ftp, file, mailto) and what looks like a file, with or without ":line:column", as compilers
/// and test runners write them. Whether there is such a file is for the caller to see.
[[nodiscard]] std::vector<TextLink> linksIn(QStringView text);
[[nodiscard]] std::optional<TextLink> linkAt(QStringView text, qsizetype place);

} // namespace orv
