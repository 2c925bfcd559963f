#include "OrvUI/InstallRecord.h"

#include "OrvCore/CommandBuilder.h"
#include "OrvCore/Paths.h"
#include "OrvProcess/ChildRecords.h"
#include "OrvUI/AppModel.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>
#include <array>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

struct ManifestFile {
    const char16_t* name;
    bool isLock = false;
};

/// After a change of one of them the install has to run again.
constexpr std::array manifestFiles{
    ManifestFile{u"package.json"},      ManifestFile{u"requirements.txt"},
    ManifestFile{u"pyproject.toml"},    ManifestFile{u"Gemfile"},
    ManifestFile{u"composer.json"},     ManifestFile{u"mix.exs"},
    ManifestFile{u"pubspec.yaml"},      ManifestFile{u"package-lock.json", true},
    ManifestFile{u"yarn.lock", true},   ManifestFile{u"pnpm-lock.yaml", true},
    ManifestFile{u"poetry.lock", true}, ManifestFile{u"uv.lock", true},
};

using Commands = QMap<QString, Manifests>;

/// What stands for an install that has begun: no file has such a name. Its time is that of the newest change when it
/// was over; none while it is under way, and when nobody was there any more to note it.
const QString unfinishedMark = u"/"_s;

bool isUnfinished(const std::optional<Manifests>& record) {
    return record && record->contains(unfinishedMark);
}

/// Whether who began the install lives, or an install that it began: one may outlive an application that was killed,
/// and goes on writing then.
bool isUnderWay(const ManifestStamp& mark, const ChildRecords& running) {
    const auto isInstallOfIt = [&mark](const ChildRecord& child) {
        return child.kind && AppModel::isInstall({child.projectID, *child.kind, child.directory}) &&
               mark.owner == u"%1 %2 %3"_s.arg(child.owner.pid).arg(child.owner.startTime, child.boot);
    };
    return ChildRecords::livesByName(mark.owner) || std::ranges::any_of(running.orphans(), isInstallOfIt);
}

qint64 modified(const QFileInfo& info) {
    return info.lastModified().toMSecsSinceEpoch();
}

/// Beside or in node_modules, what npm, pnpm and Yarn write there when they are done. Other tools keep caches in that
/// folder, so the folder itself says nothing.
constexpr std::array nodeMarks{
    u"/.package-lock.json", u"/.modules.yaml", u"/.yarn-integrity", u"/.yarn-state.yml", u"/../.yarn/install-state.gz"};

/// The files that tell of an install into the folder; empty where only the folder does, as of Bun.
QStringList marksIn(const ServiceTarget& target, const QString& folder) {
    QStringList marks;
    if (folder.endsWith(u"node_modules"_s) && !CommandBuilder::installBody(target).contains(u"bun "_s)) {
        for (const char16_t* mark : nodeMarks) {
            marks.append(folder + QString::fromUtf16(mark));
        }
    }
    return marks;
}

/// When something was last put into or taken out of what an install makes in the target's folder. Tools note in a file
/// at its top that they are done; of a Python environment the packages lie deeper. A lock file may just as well have
/// come with a pull.
qint64 newestChange(const ServiceTarget& target) {
    constexpr qint64 longAgo = 1; // 0 stands for no time
    qint64 newest = longAgo;
    for (const QString& marker : CommandBuilder::installMarkers(target)) {
        const QString path = target.directory + u'/' + marker;
        const QStringList marks = marksIn(target, path);
        if (!marks.isEmpty()) {
            for (const QString& mark : marks) {
                const QFileInfo info(mark);
                newest = info.exists() ? std::max(newest, modified(info)) : newest;
            }
            continue;
        }
        QFileInfoList looked = QDir(path).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        for (const QString& python : QDir(path + u"/lib"_s).entryList({u"python*"_s}, QDir::Dirs)) {
            looked.append(QFileInfo(path + u"/lib/"_s + python + u"/site-packages"_s));
        }
        looked.append(QFileInfo(path));
        for (const QFileInfo& info : std::as_const(looked)) {
            newest = info.exists() ? std::max(newest, modified(info)) : newest;
        }
    }
    return newest;
}

template <typename Value>
QJsonObject toJson(const QMap<QString, Value>& values, QJsonValue (*encoded)(const Value&)) {
    QJsonObject json;
    for (auto entry = values.begin(); entry != values.end(); ++entry) {
        json.insert(entry.key(), encoded(*entry));
    }
    return json;
}

using Problem = QString;

template <typename Value>
std::expected<QMap<QString, Value>, Problem> fromJson(
    const QJsonValue& json, std::expected<Value, Problem> (*decoded)(const QJsonValue&)) {
    if (!json.isObject()) {
        return std::unexpected(u"an object"_s);
    }
    const QJsonObject object = json.toObject();
    QMap<QString, Value> values;
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        std::expected<Value, Problem> value = decoded(*entry);
        if (!value) {
            return std::unexpected(value.error());
        }
        values.insert(entry.key(), *value);
    }
    return values;
}

QJsonValue encodeStamp(const ManifestStamp& stamp) {
    QJsonObject json{{u"modified"_s, stamp.modified}, {u"size"_s, stamp.sizeBytes}};
    if (!stamp.owner.isEmpty()) {
        json.insert(u"owner"_s, stamp.owner);
    }
    return json;
}
QJsonValue encodeManifests(const Manifests& manifests) {
    return toJson(manifests, encodeStamp);
}
QJsonValue encodeCommands(const Commands& commands) {
    return toJson(commands, encodeManifests);
}
QByteArray encode(const QMap<QString, Commands>& values) {
    return QJsonDocument(toJson(values, encodeCommands)).toJson();
}

std::expected<ManifestStamp, Problem> decodeStamp(const QJsonValue& json) {
    const QJsonValue modified = json[u"modified"];
    const QJsonValue size = json[u"size"];
    if (!modified.isDouble() || !size.isDouble()) {
        return std::unexpected(u"a time and a size"_s);
    }
    return ManifestStamp{modified.toInteger(), size.toInteger(), json[u"owner"].toString()};
}
std::expected<Manifests, Problem> decodeManifests(const QJsonValue& json) {
    return fromJson(json, decodeStamp);
}
std::expected<Commands, Problem> decodeCommands(const QJsonValue& json) {
    return fromJson(json, decodeManifests);
}
std::expected<QMap<QString, Commands>, Problem> decode(const QByteArray& bytes) {
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    return fromJson(document.isObject() ? QJsonValue(document.object()) : QJsonValue(), decodeCommands);
}

/// Those of one sort.
void addStamps(const QString& directory, bool areLocks, Manifests& manifests) {
    for (const ManifestFile& file : manifestFiles) {
        const QString name = QString::fromUtf16(file.name);
        const QFileInfo info(directory + u'/' + name);
        if (file.isLock == areLocks && info.exists()) {
            manifests[name] = {modified(info), info.size()};
        }
    }
}

} // namespace

InstallRecord::InstallRecord(const QString& filePath)
    : m_file(filePath, {.encode = encode, .decode = decode, .fallback = [] { return Values(); }}) {}

QString InstallRecord::defaultPath() {
    return Paths::supportDirectory() + u"/installs.json"_s;
}

bool InstallRecord::isInstallNeeded(const ServiceTarget& target) {
    const QString body = CommandBuilder::installBody(target);
    if (body.isEmpty()) {
        return false;
    }
    const std::optional<Manifests> record = recorded(target.directory, body);
    if (CommandBuilder::needsInstall(target)) {
        return record != manifests(target.directory);
    }
    if (!isUnfinished(record)) {
        return false;
    }
    const ManifestStamp mark = record->value(unfinishedMark);
    if (mark.modified != 0) {
        return newestChange(target) <= mark.modified;
    }
    const ChildRecords running(QFileInfo(m_file.path()).path() + u"/running"_s);
    if (!isUnderWay(mark, running)) {
        (void)abandon(target, body); // where that can't be written nothing settles it but another install
    }
    return true;
}

Manifests InstallRecord::manifests(const QString& directory) {
    Manifests found;
    addStamps(directory, false, found);
    addStamps(directory, true, found);
    return found;
}

std::optional<Manifests> InstallRecord::recorded(const QString& directory, const QString& installCommand) {
    m_file.reload();
    return m_file.read([&](const Values& values) -> std::optional<Manifests> {
        const Commands commands = values.value(directory);
        const auto found = commands.constFind(installCommand);
        return found == commands.cend() ? std::nullopt : std::optional(*found);
    });
}

bool InstallRecord::covers(const QString& directory, const QString& installCommand) {
    return recorded(directory, installCommand) == manifests(directory);
}

StoreResult InstallRecord::begin(const QString& directory, const QString& installCommand) {
    const ManifestStamp mark{.owner = ChildRecords::ownName()};
    return m_file.change([directory, installCommand, mark](Values& values) {
        values[directory].insert(installCommand, {{unfinishedMark, mark}});
    });
}

StoreResult InstallRecord::abandon(const ServiceTarget& target, const QString& installCommand) {
    const Manifests ended{{unfinishedMark, {.modified = newestChange(target)}}};
    return m_file.change([directory = target.directory, installCommand, ended](Values& values) {
        if (isUnfinished(values.value(directory).value(installCommand))) {
            values[directory].insert(installCommand, ended);
        }
    });
}

StoreResult InstallRecord::remember(const QString& directory, const QString& installCommand, const Manifests& before) {
    Manifests made = before;
    addStamps(directory, true, made);
    return m_file.change([directory, installCommand, made](Values& values) {
        values.removeIf([](const auto& folder) { return !QDir(folder.key()).exists(); });
        values[directory].insert(installCommand, made);
    });
}

StoreResult InstallRecord::forget(const QString& directory, const QString& installCommand) {
    const auto holds = [&](const Values& values) { return values.value(directory).contains(installCommand); };
    if (!m_file.read(holds)) {
        return {};
    }
    return m_file.change([directory, installCommand](Values& values) {
        values[directory].remove(installCommand);
        values.removeIf([](const auto& folder) { return folder.value().isEmpty(); });
    });
}

} // namespace orv
