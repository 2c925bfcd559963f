#include "OrvUI/HomeRows.h"

namespace orv {

namespace {

/// The role `name` is the member as it stands.
template <auto member, typename Row>
constexpr RowRole<Row> role(const char* name) {
    return {name, [](const Row& row) { return QVariant::fromValue(row.*member); }};
}

} // namespace

const std::vector<RowRole<CardRow>>& CardRow::roles() {
    static const std::vector<RowRole<CardRow>> table{
        role<&CardRow::key, CardRow>("projectID"),
        role<&CardRow::name, CardRow>("name"),
        role<&CardRow::path, CardRow>("path"),
        role<&CardRow::stackLine, CardRow>("stackLine"),
        role<&CardRow::tileIndex, CardRow>("tileIndex"),
        role<&CardRow::tileLetter, CardRow>("tileLetter"),
        role<&CardRow::isPinned, CardRow>("pinned"),
        role<&CardRow::cardState, CardRow>("cardState"),
        role<&CardRow::message, CardRow>("message"),
        role<&CardRow::actions, CardRow>("actions"),
        role<&CardRow::defaultAction, CardRow>("defaultAction"),
        role<&CardRow::isFlutter, CardRow>("isFlutter"),
        role<&CardRow::services, CardRow>("services"),
        role<&CardRow::failedServices, CardRow>("failedServices"),
        role<&CardRow::gitRepositories, CardRow>("gitRepositories"),
        role<&CardRow::gitBranch, CardRow>("gitBranch"),
        role<&CardRow::gitChanges, CardRow>("gitChanges"),
        role<&CardRow::gitAhead, CardRow>("gitAhead"),
        role<&CardRow::gitBehind, CardRow>("gitBehind"),
        role<&CardRow::isGitBusy, CardRow>("gitBusy"),
    };
    return table;
}

const std::vector<RowRole<RunningRow>>& RunningRow::roles() {
    static const std::vector<RowRole<RunningRow>> table{
        role<&RunningRow::key, RunningRow>("key"),
        role<&RunningRow::projectID, RunningRow>("projectID"),
        role<&RunningRow::name, RunningRow>("name"),
        role<&RunningRow::kindLabel, RunningRow>("kindLabel"),
        role<&RunningRow::address, RunningRow>("address"),
        role<&RunningRow::isPortListening, RunningRow>("portListening"),
        role<&RunningRow::tileIndex, RunningRow>("tileIndex"),
        role<&RunningRow::tileLetter, RunningRow>("tileLetter"),
    };
    return table;
}

const std::vector<RowRole<PinnedRow>>& PinnedRow::roles() {
    static const std::vector<RowRole<PinnedRow>> table{
        role<&PinnedRow::key, PinnedRow>("projectID"),       role<&PinnedRow::name, PinnedRow>("name"),
        role<&PinnedRow::tileIndex, PinnedRow>("tileIndex"), role<&PinnedRow::tileLetter, PinnedRow>("tileLetter"),
        role<&PinnedRow::cardState, PinnedRow>("cardState"),
    };
    return table;
}

const std::vector<RowRole<OutlineRow>>& OutlineRow::roles() {
    static const std::vector<RowRole<OutlineRow>> table{
        role<&OutlineRow::key, OutlineRow>("path"),
        role<&OutlineRow::name, OutlineRow>("name"),
        role<&OutlineRow::depth, OutlineRow>("depth"),
        role<&OutlineRow::isExpanded, OutlineRow>("expanded"),
        role<&OutlineRow::isFolder, OutlineRow>("isFolder"),
        role<&OutlineRow::hasChildren, OutlineRow>("hasChildren"),
        role<&OutlineRow::projectID, OutlineRow>("projectID"),
        role<&OutlineRow::tileIndex, OutlineRow>("tileIndex"),
        role<&OutlineRow::tileLetter, OutlineRow>("tileLetter"),
        role<&OutlineRow::cardState, OutlineRow>("cardState"),
        role<&OutlineRow::gitChanges, OutlineRow>("gitChanges"),
    };
    return table;
}

const std::vector<RowRole<FilterRow>>& FilterRow::roles() {
    static const std::vector<RowRole<FilterRow>> table{
        role<&FilterRow::key, FilterRow>("title"),
        role<&FilterRow::icon, FilterRow>("icon"),
        role<&FilterRow::count, FilterRow>("count"),
    };
    return table;
}

const std::vector<RowRole<SetupStepRow>>& SetupStepRow::roles() {
    static const std::vector<RowRole<SetupStepRow>> table{
        role<&SetupStepRow::title, SetupStepRow>("title"),
        role<&SetupStepRow::command, SetupStepRow>("command"),
        role<&SetupStepRow::status, SetupStepRow>("status"),
    };
    return table;
}

} // namespace orv
