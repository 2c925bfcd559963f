#pragma once

#include "OrvUI/RowModel.h"

#include <QStringList>
#include <QVariantList>

namespace orv {

// What one row of each list on the home page shows. The names of the roles stand in HomeRows.cpp.

struct CardRow {
    QString key; ///< the project's id; of a collection its path with a slash at the end
    QString name;
    QString path;
    QString stackLine;
    int tileIndex = 0;
    QString tileLetter;
    bool isPinned = false;
    QString cardState;
    QString message;       ///< of the first service that failed, also while others run
    QStringList actions;   ///< those that would start something now
    QString defaultAction; ///< of them; when there is none, the one that an idle project would have
    bool isFlutter = false;
    QVariantList
        services; ///< that run, start or are left, of maps: kind, label, phase, port, address, portListening, key
    QVariantList failedServices; ///< of maps: kind, label, message, action, key
    int gitRepositories = -1;    ///< -1 until it is known
    QString gitBranch;           ///< of the only repository
    int gitChanges = 0;
    int gitAhead = 0;
    int gitBehind = 0;
    int gitUnread = 0; ///< of `gitRepositories`: those whose status could not be read
    bool isGitBusy = false;
    bool isCollection = false; ///< a folder of projects
    QVariantList members{};    ///< its projects, of maps: projectID, name, tileIndex, tileLetter
    int runningMembers = 0;
    // In the tree of folders
    int depth = 0;
    bool isExpanded = false;
    bool hasChildren = false;

    bool operator==(const CardRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<CardRow>>& roles();
};

struct RunningRow {
    QString key; ///< of the service
    QString projectID;
    QString name;
    QString kindLabel;
    QString address;
    bool isPortListening = true;
    int tileIndex = 0;
    QString tileLetter;
    QString state; ///< "running", "orphaned" (from last time), "stopping" (from last time, too)

    bool operator==(const RunningRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<RunningRow>>& roles();
};

struct PinnedRow {
    QString key; ///< the project's id
    QString name;
    int tileIndex = 0;
    QString tileLetter;
    QString cardState;

    bool operator==(const PinnedRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<PinnedRow>>& roles();
};

struct OutlineRow {
    QString key; ///< the folder's path
    QString name;
    int depth = 0;
    bool isExpanded = false;
    bool isFolder = false; ///< holds projects, is none
    bool hasChildren = false;
    QString projectID;
    int tileIndex = 0;
    QString tileLetter;
    QString cardState;
    int gitChanges = 0;

    bool operator==(const OutlineRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<OutlineRow>>& roles();
};

struct FilterRow {
    QString key; ///< its title
    QString icon;
    int count = 0;

    bool operator==(const FilterRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<FilterRow>>& roles();
};

struct SetupStepRow {
    QString key; ///< its place in the session
    QString title;
    QString command;
    QString status;

    bool operator==(const SetupStepRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<SetupStepRow>>& roles();
};

} // namespace orv
