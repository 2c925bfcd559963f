#pragma once

#include <QString>

namespace orv {

/// Finds names by a part of them, upper and lower case alike as the user's language has it: to a Turkish reader "I" is
/// the capital of "ı", not of "i".
class NameSearch {
public:
    explicit NameSearch(const QString& text) : m_wanted(folded(text)) {}

    [[nodiscard]] bool matches(const QString& name) const;

private:
    [[nodiscard]] static QString folded(const QString& text);

    QString m_wanted;
};

} // namespace orv
