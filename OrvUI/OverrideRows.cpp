#include "OrvUI/OverrideRows.h"

#include "OrvUI/AppModel.h"
#include "OrvUI/ServiceTitle.h"
#include "OrvUI/Tile.h"

#include <QDir>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

constexpr int largestPort = 65535;

/// The key under which a scanned target is corrected, or would be: that of the kind that was detected, which an
/// override may have changed.
QString overrideKey(const ServiceTarget& target, const OverrideStore::Values& values) {
    for (const ServiceKind detected : allServiceKinds) {
        const QString key = OverrideStore::key(target.directory, detected);
        if (const auto found = values.constFind(key); found != values.constEnd() && found->kind == target.kind) {
            return key;
        }
    }
    return OverrideStore::key(target.directory, target.kind);
}

ServiceKind detectedKind(const QString& key) {
    return serviceKind(QStringView(key).sliced(key.lastIndexOf(u'|') + 1)).value_or(ServiceKind::app);
}

} // namespace

const std::vector<RowRole<OverrideRow>>& OverrideRow::roles() {
    static const std::vector<RowRole<OverrideRow>> table{
        {"key", [](const OverrideRow& row) { return QVariant(row.key); }},
        {"project", [](const OverrideRow& row) { return QVariant(row.project); }},
        {"kindLabel", [](const OverrideRow& row) { return QVariant(row.kindLabel); }},
        {"framework", [](const OverrideRow& row) { return QVariant(row.framework); }},
        {"folder", [](const OverrideRow& row) { return QVariant(row.folder); }},
        {"tileIndex", [](const OverrideRow& row) { return QVariant(row.tileIndex); }},
        {"tileLetter", [](const OverrideRow& row) { return QVariant(row.tileLetter); }},
        {"isChanged", [](const OverrideRow& row) { return QVariant(row.isChanged); }},
        {"command", [](const OverrideRow& row) { return QVariant(row.command); }},
        {"detectedCommand", [](const OverrideRow& row) { return QVariant(row.detectedCommand); }},
        {"port", [](const OverrideRow& row) { return QVariant(row.port); }},
        {"kind", [](const OverrideRow& row) { return QVariant(row.kind); }},
    };
    return table;
}

AppModel* OverrideRows::model() const {
    return m_model;
}

void OverrideRows::setModel(AppModel* model) {
    if (model == m_model) {
        return;
    }
    m_model = model;
    connect(model, &AppModel::projectsChanged, this, &OverrideRows::update);
    update();
    Q_EMIT modelChanged();
}

void OverrideRows::setFilter(const QString& filter) {
    if (filter != m_filter) {
        m_filter = filter;
        update();
        Q_EMIT filterChanged();
    }
}

void OverrideRows::update() {
    const OverrideStore::Values values = m_model->overrides().values();
    QList<OverrideRow> rows;
    for (const Project& project : m_model->projects()) {
        for (const ServiceTarget& target : project.targets) {
            const QString key = overrideKey(target, values);
            const auto changed = values.constFind(key);
            const bool isChanged = changed != values.constEnd();
            const Override value = isChanged ? *changed : Override{};
            const QString folder = QDir(project.id).relativeFilePath(target.directory);
            OverrideRow row{
                .key = key,
                .project = project.name,
                .kindLabel = serviceTitle({project.id, target.kind, target.directory}, &project),
                .framework = target.framework.value_or(QString()),
                .folder = folder == u"." ? QString() : folder,
                .tileIndex = Tile::index(project.name),
                .tileLetter = Tile::letter(project.name),
                .isChanged = isChanged,
                .command = value.command.value_or(QString()),
                .detectedCommand = value.command ? QString() : target.command,
                .port = value.port ? QString::number(*value.port) : QString(),
                .kind = static_cast<int>(target.kind),
            };
            const QString words = row.project + u' ' + row.kindLabel + u' ' + row.framework + u' ' + row.folder;
            if (words.contains(m_filter, Qt::CaseInsensitive)) {
                rows.append(std::move(row));
            }
        }
    }
    std::ranges::stable_sort(
        rows, [](const OverrideRow& a, const OverrideRow& b) { return a.project.localeAwareCompare(b.project) < 0; });
    setRows(rows);
}

QString OverrideRows::save(const QString& key, const QString& command, const QString& port, int kind) {
    Override value;
    if (const QString trimmed = port.trimmed(); !trimmed.isEmpty()) {
        bool isNumber = false;
        const int number = trimmed.toInt(&isNumber);
        if (!isNumber || number < 1 || number > largestPort) {
            return tr("The port must be a number from 1 to 65535.");
        }
        value.port = number;
    }
    if (const QString trimmed = command.trimmed(); !trimmed.isEmpty()) {
        value.command = trimmed;
    }
    if (const auto wanted = static_cast<ServiceKind>(kind);
        kind >= 0 && kind <= static_cast<int>(ServiceKind::app) && wanted != detectedKind(key)) {
        value.kind = wanted;
    }
    m_model->setOverride(key, value == Override{} ? std::nullopt : std::optional(value));
    return {};
}

void OverrideRows::reset(const QString& key) {
    m_model->setOverride(key, std::nullopt);
}

} // namespace orv
