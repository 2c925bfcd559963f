#include "OrvGit/GitLimits_p.h"
#include "OrvGit/GitService.h"

#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// In no repository.
QString nowhere() {
    return u"/"_s;
}

const char* flag(GitScope scope) {
    return scope == GitScope::global ? "--global" : "--local";
}

} // namespace

GitOutcome<void> GitService::initRepository(const QString& folder, const QString& branch) const {
    if (auto named = requireBranchName(branch); !named) {
        return named;
    }
    // Also where there is a broken one, which this mends.
    const auto output = runner.run({"init", "--initial-branch=" + branch.toUtf8()}, folder, GitLimits::local);
    return output ? GitOutcome<void>() : std::unexpected(output.error());
}

GitOutcome<std::optional<QString>> GitService::configValue(
    const QString& folder, const GitArguments& scope, const QString& key) const {
    const GitArguments words = GitArguments{"config"} + scope + GitArguments{"--get", key.toUtf8()};
    const auto result = runner.runRaw(words, folder, GitLimits::local);
    if (!result) {
        return std::unexpected(result.error());
    }
    // git-config(1): 1 says that there is no such key.
    if (result->code == 1) {
        return std::nullopt;
    }
    if (result->code != 0) {
        return std::unexpected(result->error());
    }
    const QString value = result->stdoutText();
    return value.endsWith(u'\n') ? value.chopped(1) : value;
}

GitOutcome<GitIdentity> GitService::identityOf(const QString& folder, const GitArguments& scope) const {
    const auto name = configValue(folder, scope, u"user.name"_s);
    if (!name) {
        return std::unexpected(name.error());
    }
    const auto email = configValue(folder, scope, u"user.email"_s);
    if (!email) {
        return std::unexpected(email.error());
    }
    return GitIdentity{*name, *email};
}

GitOutcome<GitIdentity> GitService::identity(const QString& repository, GitScope scope) const {
    return identityOf(repository, {flag(scope)});
}

GitOutcome<GitIdentity> GitService::effectiveIdentity(const QString& repository) const {
    return identityOf(repository, {});
}

GitOutcome<void> GitService::setIdentity(const GitIdentity& identity, const QString& repository, GitScope scope) const {
    const std::array settings{std::pair{"user.name", identity.name}, std::pair{"user.email", identity.email}};
    for (const auto& [key, value] : settings) {
        if (!value) {
            continue;
        }
        if (auto done = perform(repository, {"config", flag(scope), key, value->toUtf8()}, GitLimits::local); !done) {
            return done;
        }
    }
    return {};
}

GitOutcome<void> GitService::setGlobalConfig(const QString& key, const QString& value) const {
    return perform(nowhere(), {"config", "--global", key.toUtf8(), value.toUtf8()}, GitLimits::local);
}

std::optional<QString> GitService::globalConfigValue(const QString& key) const {
    return configValue(nowhere(), {"--global"}, key).value_or(std::nullopt);
}

std::optional<QString> GitService::effectiveConfigValue(const QString& key) const {
    return configValue(nowhere(), {}, key).value_or(std::nullopt);
}

} // namespace orv
