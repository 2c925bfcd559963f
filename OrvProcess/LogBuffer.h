#pragma once

#include <QString>

#include <deque>

namespace orv {

/// The newest lines of a service's output.
class LogBuffer {
public:
    explicit LogBuffer(qsizetype capacity) : m_capacity(capacity) {}

    [[nodiscard]] qsizetype size() const { return static_cast<qsizetype>(m_lines.size()); }
    [[nodiscard]] bool isEmpty() const { return m_lines.empty(); }
    [[nodiscard]] const QString& at(qsizetype index) const { return m_lines[static_cast<size_t>(index)]; }
    [[nodiscard]] auto begin() const { return m_lines.begin(); }
    [[nodiscard]] auto end() const { return m_lines.end(); }
    [[nodiscard]] auto rbegin() const { return m_lines.rbegin(); }
    [[nodiscard]] auto rend() const { return m_lines.rend(); }

    void clear() { m_lines.clear(); }
    /// How many of the oldest lines went to make room.
    qsizetype append(QString line) {
        m_lines.push_back(std::move(line));
        if (size() <= m_capacity) {
            return 0;
        }
        m_lines.pop_front();
        return 1;
    }

private:
    qsizetype m_capacity;
    std::deque<QString> m_lines;
};

} // namespace orv
