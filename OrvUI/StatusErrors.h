#pragma once

#include "OrvUI/ModelPart.h"
#include "OrvUI/ModelTypes.h"
#include "OrvUI/RowModel.h"

#include <QDeadlineTimer>
#include <QTimer>

#include <chrono>
#include <optional>

namespace orv {

struct StatusErrorRow {
    QString key; ///< of the message
    QString text;

    bool operator==(const StatusErrorRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<StatusErrorRow>>& roles();
};

/// The errors that a newer message took the place of before they were read: each stays until it is dismissed, or for as
/// long as it would have stood alone. The oldest is first. Lives on the main thread.
class StatusErrors : public orv::ModelPart {
    Q_OBJECT
    Q_PROPERTY(QAbstractListModel* rows READ rows CONSTANT FINAL)

public:
    /// With the newest message they are three lines.
    static constexpr int limit = 2;

    explicit StatusErrors(QObject* parent = nullptr);

    /// How long a message stands.
    void setTime(std::chrono::milliseconds time) { m_time = time; }
    [[nodiscard]] QAbstractListModel* rows() { return &m_rows; }
    Q_INVOKABLE void dismiss(const QString& errorID);

private:
    struct Kept {
        StatusMessage message;
        QDeadlineTimer until;
    };

    void takeModel() override;
    void follow();
    void update();

    std::chrono::milliseconds m_time = std::chrono::seconds(8);
    std::optional<Kept> m_newest;
    QList<Kept> m_older;
    QTimer m_nextEnd;
    RowModel<StatusErrorRow> m_rows;
};

} // namespace orv
