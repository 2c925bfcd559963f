#pragma once

#include <QStringView>

namespace orv {

/// Finds, in lines that are given one after the other, those that report an error, and the lines of the stack or of the
/// code that such a report shows below.
class ErrorLines {
public:
    enum class Place { none, first, below };

    /// `line` without control sequences.
    [[nodiscard]] Place take(QStringView line);

private:
    bool m_isInside = false;
    qsizetype m_indent = 0; ///< of the report's first line
};

} // namespace orv
