#include "OrvUI/StatusErrors.h"

#include "OrvCore/Async.h"
#include "OrvUI/AppModel.h"

namespace orv {

const std::vector<RowRole<StatusErrorRow>>& StatusErrorRow::roles() {
    using Row = StatusErrorRow;
    static const std::vector<RowRole<Row>> table{
        memberRole<&Row::key, Row>("errorID"),
        memberRole<&Row::text, Row>("text"),
    };
    return table;
}

StatusErrors::StatusErrors(QObject* parent) : ModelPart(parent) {
    m_nextEnd.setSingleShot(true);
    connect(&m_nextEnd, &QTimer::timeout, this, &StatusErrors::update);
}

void StatusErrors::takeModel() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_model != nullptr) {
        connect(m_model, &AppModel::statusMessageChanged, this, &StatusErrors::follow);
        follow();
    }
}

void StatusErrors::follow() {
    const std::optional<StatusMessage>& message = m_model->statusMessage();
    if (message && m_newest && message->id == m_newest->message.id) {
        return;
    }
    // One that went without another in its place was read, or stood for its time.
    if (message && m_newest && m_newest->message.isError) {
        m_older.append(*m_newest);
    }
    m_newest.reset();
    if (message) {
        m_newest = Kept{*message, QDeadlineTimer(m_time)};
        m_older.removeIf([&](const Kept& kept) { return kept.message.text == message->text; });
    }
    m_older = m_older.last(qMin(m_older.size(), limit));
    update();
}

void StatusErrors::dismiss(const QString& errorID) {
    ORV_ASSERT_MAIN_THREAD();
    m_older.removeIf([&](const Kept& kept) { return kept.message.id.toString() == errorID; });
    update();
}

void StatusErrors::update() {
    m_older.removeIf([](const Kept& kept) { return kept.until.hasExpired(); });
    QList<StatusErrorRow> rows;
    for (const Kept& kept : std::as_const(m_older)) {
        rows.append({kept.message.id.toString(), kept.message.text});
    }
    m_rows.setRows(rows);
    // They came one after the other, and end so.
    if (!m_older.isEmpty()) {
        m_nextEnd.start(std::chrono::ceil<std::chrono::milliseconds>(m_older.first().until.remainingTimeAsDuration()));
    }
}

} // namespace orv
