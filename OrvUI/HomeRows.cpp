#include "OrvUI/HomeRows.h"

namespace orv {

const std::vector<RowRole<CardRow>>& CardRow::roles() {
    static const std::vector<RowRole<CardRow>> table{
        memberRole<&CardRow::key, CardRow>("projectID"),
        memberRole<&CardRow::name, CardRow>("name"),
        memberRole<&CardRow::path, CardRow>("path"),
        memberRole<&CardRow::stackLine, CardRow>("stackLine"),
        memberRole<&CardRow::tileIndex, CardRow>("tileIndex"),
        memberRole<&CardRow::tileLetter, CardRow>("tileLetter"),
        memberRole<&CardRow::isPinned, CardRow>("pinned"),
        memberRole<&CardRow::cardState, CardRow>("cardState"),
        memberRole<&CardRow::message, CardRow>("message"),
        memberRole<&CardRow::actions, CardRow>("actions"),
        memberRole<&CardRow::defaultAction, CardRow>("defaultAction"),
        memberRole<&CardRow::isFlutter, CardRow>("isFlutter"),
        memberRole<&CardRow::services, CardRow>("services"),
        memberRole<&CardRow::failedServices, CardRow>("failedServices"),
        memberRole<&CardRow::gitRepositories, CardRow>("gitRepositories"),
        memberRole<&CardRow::gitBranch, CardRow>("gitBranch"),
        memberRole<&CardRow::gitChanges, CardRow>("gitChanges"),
        memberRole<&CardRow::gitUnread, CardRow>("gitUnread"),
        memberRole<&CardRow::gitAhead, CardRow>("gitAhead"),
        memberRole<&CardRow::gitBehind, CardRow>("gitBehind"),
        memberRole<&CardRow::isGitBusy, CardRow>("gitBusy"),
        memberRole<&CardRow::isCollection, CardRow>("isCollection"),
        memberRole<&CardRow::members, CardRow>("members"),
        memberRole<&CardRow::runningMembers, CardRow>("runningMembers"),
        memberRole<&CardRow::depth, CardRow>("depth"),
        memberRole<&CardRow::isExpanded, CardRow>("expanded"),
        memberRole<&CardRow::hasChildren, CardRow>("hasChildren"),
    };
    return table;
}

const std::vector<RowRole<RunningRow>>& RunningRow::roles() {
    static const std::vector<RowRole<RunningRow>> table{
        memberRole<&RunningRow::key, RunningRow>("key"),
        memberRole<&RunningRow::projectID, RunningRow>("projectID"),
        memberRole<&RunningRow::name, RunningRow>("name"),
        memberRole<&RunningRow::kindLabel, RunningRow>("kindLabel"),
        memberRole<&RunningRow::address, RunningRow>("address"),
        memberRole<&RunningRow::isPortListening, RunningRow>("portListening"),
        memberRole<&RunningRow::tileIndex, RunningRow>("tileIndex"),
        memberRole<&RunningRow::tileLetter, RunningRow>("tileLetter"),
        memberRole<&RunningRow::state, RunningRow>("serviceState"),
    };
    return table;
}

const std::vector<RowRole<PinnedRow>>& PinnedRow::roles() {
    static const std::vector<RowRole<PinnedRow>> table{
        memberRole<&PinnedRow::key, PinnedRow>("projectID"),
        memberRole<&PinnedRow::name, PinnedRow>("name"),
        memberRole<&PinnedRow::tileIndex, PinnedRow>("tileIndex"),
        memberRole<&PinnedRow::tileLetter, PinnedRow>("tileLetter"),
        memberRole<&PinnedRow::cardState, PinnedRow>("cardState"),
    };
    return table;
}

const std::vector<RowRole<OutlineRow>>& OutlineRow::roles() {
    static const std::vector<RowRole<OutlineRow>> table{
        memberRole<&OutlineRow::key, OutlineRow>("path"),
        memberRole<&OutlineRow::name, OutlineRow>("name"),
        memberRole<&OutlineRow::depth, OutlineRow>("depth"),
        memberRole<&OutlineRow::isExpanded, OutlineRow>("expanded"),
        memberRole<&OutlineRow::isFolder, OutlineRow>("isFolder"),
        memberRole<&OutlineRow::hasChildren, OutlineRow>("hasChildren"),
        memberRole<&OutlineRow::projectID, OutlineRow>("projectID"),
        memberRole<&OutlineRow::tileIndex, OutlineRow>("tileIndex"),
        memberRole<&OutlineRow::tileLetter, OutlineRow>("tileLetter"),
        memberRole<&OutlineRow::cardState, OutlineRow>("cardState"),
        memberRole<&OutlineRow::gitChanges, OutlineRow>("gitChanges"),
    };
    return table;
}

const std::vector<RowRole<FilterRow>>& FilterRow::roles() {
    static const std::vector<RowRole<FilterRow>> table{
        memberRole<&FilterRow::key, FilterRow>("title"),
        memberRole<&FilterRow::icon, FilterRow>("icon"),
        memberRole<&FilterRow::count, FilterRow>("count"),
    };
    return table;
}

const std::vector<RowRole<SetupStepRow>>& SetupStepRow::roles() {
    static const std::vector<RowRole<SetupStepRow>> table{
        memberRole<&SetupStepRow::title, SetupStepRow>("title"),
        memberRole<&SetupStepRow::command, SetupStepRow>("command"),
        memberRole<&SetupStepRow::status, SetupStepRow>("status"),
    };
    return table;
}

} // namespace orv
