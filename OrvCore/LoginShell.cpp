#include "OrvCore/LoginShell.h"

#include "OrvCore/Account.h"

#include <QFileInfo>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr std::array posixShells{"ash"_L1,  "bash"_L1, "dash"_L1, "ksh"_L1,  "ksh93"_L1, "lksh"_L1,
                                 "mksh"_L1, "oksh"_L1, "sh"_L1,   "yash"_L1, "zsh"_L1};

} // namespace

QString loginShell(const QString& accountShell, const std::function<bool(const QString&)>& isExecutable) {
    QString zsh = u"/bin/zsh"_s;
    if (isExecutable(zsh)) {
        return zsh;
    }
    const QString name = accountShell.section(u'/', -1);
    const bool isKnown = std::ranges::find(posixShells, name) != posixShells.end();
    if (isKnown && accountShell.startsWith(u'/') && isExecutable(accountShell)) {
        return accountShell;
    }
    return u"/bin/sh"_s;
}

QString loginShell() {
    return loginShell(Account::current().shell, [](const QString& path) {
        const QFileInfo info(path);
        return info.isFile() && info.isExecutable();
    });
}

} // namespace orv
