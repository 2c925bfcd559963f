#include "OrvCore/Settings.h"

#include "OrvCore/Account.h"
#include "OrvCore/Async.h"
#include "OrvCore/JsonRecord_p.h"
#include "OrvCore/Paths.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

template <json::RecordOf<LastRun> Self, typename Visitor>
void visitFields(Self& run, Visitor& visitor) {
    visitor.required("projectID"_L1, run.projectID);
    visitor.required("action"_L1, run.action);
}

template <json::RecordOf<AppSettings> Self, typename Visitor>
void visitFields(Self& settings, Visitor& visitor) {
    visitor.required("displayName"_L1, settings.displayName);
    visitor.folder("scanRoot"_L1, settings.scanRoot);
    visitor.required("showDockIcon"_L1, settings.showDockIcon);
    visitor.required("pinnedProjectIDs"_L1, settings.pinnedProjectIDs);
    visitor.defaulted("appearance"_L1, settings.appearance);
    visitor.defaulted("theme"_L1, settings.theme);
    visitor.defaulted("viewMode"_L1, settings.viewMode);
    visitor.defaulted("dismissedCTAs"_L1, settings.dismissedCTAs);
    visitor.optional("avatarColorHex"_L1, settings.avatarColorHex);
    visitor.optional("avatarPhotoPath"_L1, settings.avatarPhotoPath);
    visitor.optional("lastRun"_L1, settings.lastRun);
    visitor.defaulted("defaultBranch"_L1, settings.defaultBranch);
    visitor.defaulted("defaultPullStrategy"_L1, settings.defaultPullStrategy);
    visitor.defaulted("widgetsConfirmed"_L1, settings.widgetsConfirmed);
    visitor.defaulted("onboardingCompleted"_L1, settings.onboardingCompleted);
    visitor.defaulted("notificationsEnabled"_L1, settings.notificationsEnabled);
    visitor.defaulted("notifyReady"_L1, settings.notifyReady);
    visitor.defaulted("notifyCrash"_L1, settings.notifyCrash);
    visitor.defaulted("notifyAdded"_L1, settings.notifyAdded);
    visitor.defaulted("notifyOnlyInBackground"_L1, settings.notifyOnlyInBackground);
    visitor.defaulted("notifyAgents"_L1, settings.notifyAgents);
    visitor.defaulted("defaultAgent"_L1, settings.defaultAgent);
    visitor.defaulted("agentAutonomy"_L1, settings.agentAutonomy);
    visitor.defaulted("customAgentCommand"_L1, settings.customAgentCommand);
    visitor.defaulted("quickPanelShortcutEnabled"_L1, settings.quickPanelShortcutEnabled);
    visitor.defaulted("agentWorktrees"_L1, settings.agentWorktrees);
    visitor.defaulted("agentFiles"_L1, settings.agentFiles);
    visitor.defaulted("terminalClipboard"_L1, settings.terminalClipboard);
    visitor.defaulted("editorCommand"_L1, settings.editorCommand);
}

namespace {

std::expected<StoredSettings, QString> decodeStored(const QByteArray& bytes) {
    const auto document = json::parse(bytes);
    if (!document) {
        return std::unexpected(document.error());
    }
    Decoded<AppSettings> settings = AppSettings::fromJson(document->object());
    if (!settings) {
        return std::unexpected(settings.error().text());
    }
    QJsonObject unknown = document->object();
    for (const QString& key : json::keys<AppSettings>()) {
        unknown.remove(key);
    }
    return StoredSettings{*std::move(settings), std::move(unknown)};
}

QByteArray encodeStored(const StoredSettings& stored) {
    QJsonObject members = stored.settings.toJson();
    for (auto member = stored.unknown.begin(); member != stored.unknown.end(); ++member) {
        members.insert(member.key(), member.value());
    }
    return QJsonDocument(members).toJson();
}

/// By member.
bool collide(const StoredSettings& base, const StoredSettings& mine, const StoredSettings& theirs) {
    const QJsonObject before = base.settings.toJson();
    const QJsonObject my = mine.settings.toJson();
    const QJsonObject their = theirs.settings.toJson();
    return std::ranges::any_of(json::keys<AppSettings>(), [&](const QString& key) {
        return my.value(key) != before.value(key) && their.value(key) != before.value(key);
    });
}

} // namespace

AppSettings AppSettings::defaults() {
    AppSettings settings;
    settings.displayName = displayNameFor(Account::current().fullName);
    settings.scanRoot = Paths::realHome() + u"/Documents/Quillmere"_s;
    return settings;
}

QString AppSettings::displayNameFor(const QString& fullAccountName) {
    const QString first = fullAccountName.simplified().section(u' ', 0, 0);
    return first.isEmpty() ? u"there"_s : first;
}

QStringList AppSettings::worktreeCopies(const QString& projectID) const {
    return agentFiles.value(projectID, {u".env"_s, u".env.*"_s});
}

QJsonObject AppSettings::toJson() const {
    return json::encode(*this);
}
Decoded<AppSettings> AppSettings::fromJson(const QJsonObject& json) {
    return json::decode<AppSettings>(json);
}

SettingsStore::SettingsStore(const QString& filePath, QObject* parent)
    : QObject(parent),
      m_watcher({filePath}),
      m_file(
          filePath, {encodeStored, decodeStored, [] { return StoredSettings{AppSettings::defaults(), {}}; }, collide}),
      m_settings(m_file.record().settings) {
    connect(&m_watcher, &StoreWatcher::changed, this, [this] {
        m_file.reload();
        takeIn();
    });
}

QString SettingsStore::defaultPath() {
    return Paths::supportDirectory() + u"/settings.json"_s;
}

StoreResult SettingsStore::change(const std::function<void(AppSettings&)>& change) {
    ORV_ASSERT_MAIN_THREAD();
    StoreResult result = m_file.change([change](StoredSettings& stored) { change(stored.settings); });
    takeIn();
    return result;
}

StoreResult SettingsStore::save() {
    ORV_ASSERT_MAIN_THREAD();
    StoreResult result = m_file.save();
    takeIn();
    return result;
}

StoreResult SettingsStore::flush() {
    ORV_ASSERT_MAIN_THREAD();
    StoreResult result = m_file.flush();
    takeIn();
    return result;
}

QString SettingsStore::filePath() const {
    return m_file.path();
}

void SettingsStore::takeIn() {
    AppSettings fresh = m_file.record().settings;
    if (fresh == m_settings) {
        return;
    }
    m_settings = std::move(fresh);
    Q_EMIT settingsChanged();
}

} // namespace orv
