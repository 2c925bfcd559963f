#include "OrvUI/Palette.h"

#include "OrvCore/Async.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/Keymap.h"
#include "OrvUI/Palette_p.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// How many of a group are shown, in the order of the groups.
constexpr std::array shownOf{6, 8, 6, 5};
constexpr std::array suggestedOf{5, 5, 4, 0};

constexpr int forProjects = 11; ///< of two that fit alike, the project
constexpr int forNamed = 8;     ///< of an action, when all that was typed is in the name of its project

/// Of two that fit alike (Palette::Hit::quality), what was often chosen comes before what fits a little better.
int bonusOf(double count) {
    return std::min(20, static_cast<int>(6 * std::log2(1 + count)));
}

/// A project whose name was typed comes before whatever else fits as well, however often that is chosen.
int quality(FuzzyFit fit, bool isProject) {
    return 2 * static_cast<int>(fit) + (isProject && fit >= FuzzyFit::words ? 1 : 0);
}

} // namespace

const std::vector<RowRole<PaletteRow>>& PaletteRow::roles() {
    static const std::vector<RowRole<PaletteRow>> table{
        memberRole<&PaletteRow::group, PaletteRow>("group"),
        memberRole<&PaletteRow::title, PaletteRow>("title"),
        memberRole<&PaletteRow::hits, PaletteRow>("hits"),
        memberRole<&PaletteRow::detail, PaletteRow>("detail"),
        memberRole<&PaletteRow::icon, PaletteRow>("glyph"),
        memberRole<&PaletteRow::tileIndex, PaletteRow>("tileIndex"),
        memberRole<&PaletteRow::tileLetter, PaletteRow>("tileLetter"),
        memberRole<&PaletteRow::shortcut, PaletteRow>("shortcut"),
        memberRole<&PaletteRow::hint, PaletteRow>("hint"),
        memberRole<&PaletteRow::projectID, PaletteRow>("projectID"),
    };
    return table;
}

Palette::VerbInfo::VerbInfo(const char* word, Group in, const QString& text, const char* picture, const char* keys)
    : name(QString::fromLatin1(word)),
      group(in),
      before(text.section(u"%1"_s, 0, 0)),
      after(text.section(u"%1"_s, 1)),
      icon(QString::fromLatin1(picture)),
      shortcut(*keys != 0 ? Keymap::text(QString::fromLatin1(keys)) : QString()) {}

const std::array<Palette::VerbInfo, Palette::verbCount>& Palette::verbs() {
    static const std::array<VerbInfo, verbCount> table{
        VerbInfo("project", projects, u"%1"_s, "", ""),
        VerbInfo("run", actions, tr("Run %1"), "own-play-fill", "run"),
        VerbInfo("stop", actions, tr("Stop %1"), "own-stop-fill", "run"),
        VerbInfo("restart", actions, tr("Restart %1"), "rotate-cw", "restart"),
        VerbInfo("browse", actions, tr("Open %1 in your browser"), "globe", "browse"),
        VerbInfo("push", actions, tr("Push %1"), "arrow-up-from-line", "push"),
        VerbInfo("pull", actions, tr("Pull %1"), "arrow-down-to-line", "pull"),
        VerbInfo("fetch", actions, tr("Fetch %1"), "refresh-cw", "fetch"),
        VerbInfo("terminal", actions, tr("New terminal in %1"), "terminal", "newTerminal"),
        VerbInfo("ask", actions, tr("Ask AI in %1"), "sparkles", "ask"),
        VerbInfo("pin", actions, tr("Pin %1"), "pin", "pin"),
        VerbInfo("unpin", actions, tr("Remove the pin of %1"), "pin", "pin"),
        VerbInfo("tasks", places, tr("Tasks of %1"), "list-todo", ""),
        VerbInfo("logs", places, tr("Logs of %1"), "logs", ""),
        VerbInfo("git", places, tr("Git of %1"), "git-branch", ""),
        VerbInfo("files", places, tr("Files of %1"), "folder-tree", ""),
    };
    return table;
}

Palette::Palette(QObject* parent)
    : QObject(parent), m_updateSoon(this, [this] {
          if (m_isOpen) {
              collect();
              search(Delegates::follow); // Enter must do what is marked
          }
      }) {}

Palette::~Palette() = default;

AppModel* Palette::model() const {
    return m_model;
}

void Palette::setModel(AppModel* model) {
    if (model == m_model) {
        return;
    }
    m_model = model;
    m_uses.emplace(model->supportUrl().toLocalFile() + u"/palette.json"_s);
    for (const auto signal :
         {&AppModel::projectsChanged, &AppModel::servicesChanged, &AppModel::pinsChanged, &AppModel::tasksChanged,
          &AppModel::gitBadgesChanged, &AppModel::gitBusyChanged, &AppModel::preferencesChanged}) {
        connect(model, signal, this, [this] {
            if (m_isOpen) {
                m_updateSoon();
            }
        });
    }
    Q_EMIT modelChanged();
}

void Palette::open() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_isOpen || !m_model) {
        return;
    }
    m_isOpen = true;
    m_counts = m_uses->all(QDateTime::currentDateTimeUtc());
    collect();
    search();
    Q_EMIT isOpenChanged();
}

void Palette::close() {
    ORV_ASSERT_MAIN_THREAD();
    if (!m_isOpen) {
        return;
    }
    m_isOpen = false;
    Q_EMIT isOpenChanged();
    m_query.clear();
    Q_EMIT queryChanged();
    m_scope.clear();
    Q_EMIT scopeChanged();
    m_results.setRows({});
    Q_EMIT resultsChanged();
    m_candidates = {};
    m_items = {};
}

void Palette::setQuery(const QString& query) {
    ORV_ASSERT_MAIN_THREAD();
    if (m_isOpen && query != m_query) {
        m_query = query;
        search();
        Q_EMIT queryChanged();
    }
}

QString Palette::scopeName() const {
    const Project* project = m_model ? m_model->project(m_scope) : nullptr;
    return project != nullptr ? project->name : QString();
}

bool Palette::narrow(int row) {
    if (row < 0 || row >= rows().size() || rows()[row].projectID.isEmpty() || !m_scope.isEmpty()) {
        return false;
    }
    m_scope = rows()[row].projectID;
    m_query.clear();
    search();
    Q_EMIT queryChanged();
    Q_EMIT scopeChanged();
    return true;
}

bool Palette::widen() {
    if (m_scope.isEmpty()) {
        return false;
    }
    m_scope.clear();
    search();
    Q_EMIT scopeChanged();
    return true;
}

void Palette::search(Delegates delegates) {
    const FuzzyPattern pattern(m_query);
    QList<PaletteRow> rows;
    for (const Hit& hit : pattern.isEmpty() ? suggested() : arranged(found())) {
        rows.append(row(hit, pattern));
    }
    assignKeys(rows, delegates);
    m_results.setRows(rows);
    Q_EMIT resultsChanged();
}

/// To make delegates anew for each letter that is typed would take most of a frame.
void Palette::assignKeys(QList<PaletteRow>& rows, Delegates delegates) {
    const QList<PaletteRow>& before = m_results.rows();
    for (qsizetype place = 0; place < rows.size(); ++place) {
        PaletteRow& row = rows[place];
        const auto same = delegates == Delegates::follow ? std::ranges::find(before, row.what, &PaletteRow::what)
                                                         : before.begin() + std::min(place, before.size());
        row.key = same != before.end() ? same->key : QString::number(m_nextKey++);
    }
}

QList<Palette::Hit> Palette::found() const {
    const FuzzyPattern pattern(m_query);
    QList<Hit> hits;
    FuzzyText text;
    for (const Candidate& candidate : m_candidates) {
        if (!m_scope.isEmpty() && candidate.projectID != m_scope) {
            continue;
        }
        const int forName = pattern.score(candidate.name) ? forNamed : 0;
        for (quint32 left = candidate.verbs; left != 0; left &= left - 1) {
            const int verb = std::countr_zero(left);
            const VerbInfo& info = verbs()[static_cast<size_t>(verb)];
            if (!pattern.mayBeIn(info.before.letters | candidate.name.letters | info.after.letters)) {
                continue;
            }
            text.clear();
            text.append(info.before);
            text.append(candidate.name);
            text.append(info.after);
            if (const std::optional<int> score = pattern.score(text)) {
                const int bonus = candidate.bonus[static_cast<size_t>(verb)] + (verb == show ? forProjects : forName);
                hits.append(
                    {quality(pattern.fit(text), verb == show), *score + bonus, info.group, &candidate, verb, {}});
            }
        }
    }
    if (!m_scope.isEmpty()) {
        return hits;
    }
    constexpr int forOtherWords = 6;
    for (const Item& item : m_items) {
        if (const auto score = pattern.score(item.title)) {
            const int fit = quality(pattern.fit(item.title), false);
            hits.append({fit, *score + item.bonus, item.group, {}, 0, &item});
        } else if (const auto other = pattern.score(item.alsoKnownAs)) {
            // Long lists of words have the letters of nearly everything.
            if (pattern.fit(item.alsoKnownAs) >= FuzzyFit::words) {
                const int fit = quality(FuzzyFit::words, false);
                hits.append({fit, *other - forOtherWords + item.bonus, item.group, {}, 0, &item});
            }
        }
    }
    return hits;
}

/// The best of each group, and the groups by the best in them.
QList<Palette::Hit> Palette::arranged(QList<Hit> hits) {
    const auto worth = [](const Hit& hit) { return std::pair(hit.quality, hit.score); };
    std::ranges::stable_sort(hits, std::greater(), worth);
    std::array<QList<Hit>, shownOf.size()> groups;
    for (const Hit& hit : std::as_const(hits)) {
        if (groups[hit.group].size() < shownOf[hit.group]) {
            groups[hit.group].append(hit);
        }
    }
    std::ranges::stable_sort(groups, std::greater(), [&](const QList<Hit>& group) {
        return group.isEmpty() ? std::pair(-1, 0) : worth(group.first());
    });
    QList<Hit> result;
    for (const QList<Hit>& group : groups) {
        result += group;
    }
    return result;
}

/// Before anything was typed: what is chosen often, then what lies near. Of a project, everything.
QList<Palette::Hit> Palette::suggested() const {
    std::array<QList<Hit>, suggestedOf.size()> groups;
    for (const Candidate& candidate : m_candidates) {
        if (!m_scope.isEmpty() && candidate.projectID != m_scope) {
            continue;
        }
        for (quint32 left = candidate.verbs; left != 0; left &= left - 1) {
            const int verb = std::countr_zero(left);
            const int bonus = candidate.bonus[static_cast<size_t>(verb)];
            const bool isWanted = !m_scope.isEmpty() || verb == show || bonus > 0;
            const Group group = verbs()[static_cast<size_t>(verb)].group;
            if (isWanted) {
                groups[group].append(
                    {0, bonus * 10 + (verb == show ? candidate.nearness : 0), group, &candidate, verb, {}});
            }
        }
    }
    if (!m_scope.isEmpty()) {
        return groups[projects] + groups[actions] + groups[places];
    }
    for (const Item& item : m_items) {
        groups[item.group].append({0, item.bonus * 10, item.group, {}, 0, &item});
    }
    QList<Hit> result;
    for (size_t group = 0; group < groups.size(); ++group) {
        std::ranges::stable_sort(groups[group], std::greater(), &Hit::score);
        result += groups[group].first(std::min<qsizetype>(groups[group].size(), suggestedOf[group]));
    }
    return result;
}

PaletteRow Palette::row(const Hit& hit, const FuzzyPattern& pattern) const {
    PaletteRow row;
    FuzzyText text;
    if (hit.item != nullptr) {
        row = hit.item->row;
        text = hit.item->title;
    } else {
        const VerbInfo& info = verbs()[static_cast<size_t>(hit.verb)];
        const Project* project = m_model->project(hit.candidate->projectID);
        text.append(info.before);
        text.append(hit.candidate->name);
        text.append(info.after);
        row = {
            .what = key(hit.candidate->projectID, hit.verb),
            .group = {},
            .title = text.text,
            .detail = project != nullptr ? detail(*project, static_cast<Verb>(hit.verb)) : QString(),
            .icon = info.icon,
            .tileIndex = hit.candidate->tileIndex,
            .tileLetter = hit.candidate->tileLetter,
            .shortcut = info.shortcut,
            .hint = {},
            .projectID = hit.candidate->projectID,
        };
    }
    const std::array headings{tr("Projects"), tr("Actions"), tr("Go to"), tr("Tasks")};
    row.group = headings[hit.group];
    row.hint = hit.group == actions ? QString() : tr("Open");
    for (const auto& [start, length] : pattern.hits(text)) {
        row.hits.append(QVariantMap{{u"start"_s, start}, {u"length"_s, length}});
    }
    return row;
}

QString Palette::key(const QString& projectID, int verb) {
    return verbs()[static_cast<size_t>(verb)].name + u':' + projectID;
}

int Palette::bonus(const QString& key) const {
    return bonusOf(m_counts.value(key));
}

void Palette::activate(int row) {
    ORV_ASSERT_MAIN_THREAD();
    if (row >= 0 && row < rows().size()) {
        const PaletteRow chosen = rows()[row];
        std::function<void()> perform;
        if (const auto item = std::ranges::find(m_items, chosen.what, [](const Item& it) { return it.row.what; });
            item != m_items.end()) {
            perform = item->perform;
        }
        note(chosen.what);
        close();
        if (perform) {
            perform();
        } else {
            performVerb(chosen);
        }
    }
}

void Palette::runOrStop(int row) {
    ORV_ASSERT_MAIN_THREAD();
    if (row < 0 || row >= rows().size()) {
        return;
    }
    if (const QString projectID = rows()[row].projectID; !projectID.isEmpty()) {
        note(key(projectID, show));
        close();
        m_model->toggleProject(projectID);
    }
}

void Palette::note(const QString& key) {
    if (const StoreResult noted = m_uses->note(key, QDateTime::currentDateTimeUtc()); !noted) {
        qWarning("%s", qUtf8Printable(noted.error().text()));
    }
}

} // namespace orv
