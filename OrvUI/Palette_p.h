#pragma once

#include "OrvUI/FuzzyMatch.h"
#include "OrvUI/Palette.h"

#include <functional>

namespace orv {

struct Palette::VerbInfo {
    /// `text` has "%1" where the project's name goes.
    VerbInfo(const char* word, Group in, const QString& text, const char* picture, const char* keys);

    QString name; ///< in keys
    Group group;
    FuzzyText before; ///< the project's name
    FuzzyText after;
    QString icon;
    QString shortcut;
};

/// A project with what can be done with it now.
struct Palette::Candidate {
    QString projectID;
    FuzzyText name;
    int tileIndex = 0;
    QString tileLetter;
    quint32 verbs = 0; ///< a bit each
    int nearness = 0;  ///< the higher, the sooner it is suggested before anything was typed
    std::array<int, verbCount> bonus{};
};

/// Something that is found by words of its own.
struct Palette::Item {
    PaletteRow row;
    Group group = actions;
    FuzzyText title;
    FuzzyText alsoKnownAs; ///< finds it by whole words and their beginnings, for a little less
    int bonus = 0;
    std::function<void()> perform;
};

struct Palette::Hit {
    int quality = 0; ///< before any score
    int score = 0;   ///< what is often chosen has more
    Group group = projects;
    const Candidate* candidate = nullptr;
    int verb = 0;               ///< of the candidate
    const Item* item = nullptr; ///< instead of a candidate
};

} // namespace orv
