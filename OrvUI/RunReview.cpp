#include "OrvUI/RunReview.h"

#include "OrvCore/Async.h"
#include "OrvGit/GitPath.h"
#include "OrvUI/AgentRuns.h"
#include "OrvUI/AppModel.h"

#include <algorithm>

namespace orv {

void RunReview::setRunKey(const QString& key) {
    ORV_ASSERT_MAIN_THREAD();
    m_runKey = key;
    m_diff = {};
    const int generation = ++m_generation;
    if (const AgentRun* run = m_model ? m_model->agentRunner().run(QUuid::fromString(key)) : nullptr) {
        onFinished(m_model->agentRunner().diff(run), this, [this, generation](const AgentRuns::DiffResult& diff) {
            if (generation == m_generation) {
                m_diff = diff;
                show();
            }
        });
    }
    show();
}

void RunReview::setPath(const QString& path) {
    ORV_ASSERT_MAIN_THREAD();
    if (path != m_path) {
        m_path = path;
        show();
    }
}

void RunReview::show() {
    FileDiff shown;
    m_note.clear();
    if (!m_diff) {
        m_note = m_diff.error();
    } else if (!m_diff->files.isEmpty()) {
        const auto isIt = [this](const FileDiff& file) { return GitPath::fromBytes(file.path()) == m_path; };
        const auto file = std::ranges::find_if(m_diff->files, isIt);
        if (file != m_diff->files.end()) {
            shown = *file;
        }
        if (shown.hunks.isEmpty() && !m_path.isEmpty()) {
            m_note = shown.content == DiffContent::binary ? tr("It is not text.")
                     : m_diff->isCut && file == m_diff->files.end()
                         ? tr("It was too much to be kept whole: of this file nothing is.")
                         : tr("No line of it differs.");
        }
    }
    m_lines.setDiff(shown);
    Q_EMIT changed();
}

} // namespace orv
