#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <chrono>
#include <functional>
#include <ostream>

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QByteArray& bytes, std::ostream* out) {
    *out << '"' << bytes.toStdString() << '"';
}

namespace orv::test {

/// Runs the event loop until `condition` holds; false when `limit` passes first.
[[nodiscard]] bool waitFor(
    const std::function<bool()>& condition, std::chrono::milliseconds limit = std::chrono::seconds(20));

/// A temporary folder with files in it; gone with the object.
class TemporaryTree {
public:
    TemporaryTree();
    [[nodiscard]] QString path(const QString& relative = {}) const;
    /// Makes the folders on the way; a path that ends in "/" makes a folder. Gives the full path.
    QString add(const QString& relative, const QByteArray& content = {});

private:
    QTemporaryDir m_dir;
};

[[nodiscard]] QByteArray readFile(const QString& path);
/// Of a file of the source tree. Only one object file knows where that is, so that the others come out of a compiler
/// cache in any folder.
[[nodiscard]] QString sourcePath(const QString& relative);
/// The program of `TestChild.cpp`.
[[nodiscard]] QString testChildPath();

/// Sets an environment variable for the length of a scope; an absent value unsets it.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const char* value);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    QByteArray m_name;
    QByteArray m_old;
    bool m_wasSet;
};

/// Counts what a leak would leave behind in this process.
struct ProcessResources {
    int descriptors = 0;
    int threads = 0;
    int children = 0; ///< zombies included

    bool operator==(const ProcessResources&) const = default;
    [[nodiscard]] static ProcessResources now();
};
void PrintTo(const ProcessResources& resources, std::ostream* out);

} // namespace orv::test
