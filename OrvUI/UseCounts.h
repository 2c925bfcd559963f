#pragma once

#include "OrvCore/StoreFile.h"

#include <QDateTime>
#include <QMap>
#include <QString>

namespace orv {

/// How often things are chosen, of late more than long ago: each choice counts one, and half as much after two weeks.
/// Kept in a file, for the things that are worth most. Safe on any thread.
class UseCounts {
public:
    static constexpr qsizetype limit = 200; ///< things that are kept

    explicit UseCounts(const QString& filePath);

    /// 0 of what was never chosen.
    [[nodiscard]] double of(const QString& key, const QDateTime& now) const;
    /// All of them at once, for a look at many.
    [[nodiscard]] QMap<QString, double> all(const QDateTime& now) const;
    StoreResult note(const QString& key, const QDateTime& now);

    struct Use {
        double count = 0; ///< as of `at`
        QDateTime at;

        bool operator==(const Use&) const = default;
    };

private:
    StoreFile<QMap<QString, Use>> m_file;
};

} // namespace orv
