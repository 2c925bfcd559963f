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
    /// When the line came: milliseconds since 1970, 0: nobody knows.
    [[nodiscard]] qint64 timeAt(qsizetype index) const { return m_times[static_cast<size_t>(index)]; }
    [[nodiscard]] auto begin() const { return m_lines.begin(); }
    [[nodiscard]] auto end() const { return m_lines.end(); }
    [[nodiscard]] auto rbegin() const { return m_lines.rbegin(); }
    [[nodiscard]] auto rend() const { return m_lines.rend(); }

    void clear() {
        m_lines.clear();
        m_times.clear();
    }
    /// How many of the oldest lines went to make room.
    qsizetype append(QString line, qint64 time = 0) {
        m_lines.push_back(std::move(line));
        m_times.push_back(time);
        if (size() <= m_capacity) {
            return 0;
        }
        m_lines.pop_front();
        m_times.pop_front();
        return 1;
    }

private:
    qsizetype m_capacity;
    std::deque<QString> m_lines;
    std::deque<qint64> m_times;
};

} // namespace orv
