#include "OrvCore/Paths.h"

#include "OrvCore/Account.h"

#include <QDir>
#include <QStandardPaths>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QString withoutTrailingSlash(QString path) {
    while (path.size() > 1 && path.endsWith(u'/')) {
        path.chop(1);
    }
    return path;
}

} // namespace

QString Paths::supportDirectory() {
    if (const QString override = qEnvironmentVariable("ORV_SUPPORT_DIR"); !override.isEmpty()) {
        return QDir::cleanPath(QDir().absoluteFilePath(override));
    }
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/OrvLauncher"_s;
}

QString Paths::realHome() {
    const QString home = Account::current().home;
    return home.isEmpty() ? QDir::homePath() : withoutTrailingSlash(home);
}

QString Paths::shortened(const QString& path) {
    const QString home = realHome();
    const bool isInHome = !home.isEmpty() && (path == home || path.startsWith(home + u'/'));
    return isInHome ? u'~' + path.sliced(home.size()) : path;
}

QString Paths::fileUrl(const QString& path) {
    // By hand: QUrl::fromLocalFile takes a path that begins with two slashes for a host's.
    const QByteArray encoded = QUrl::toPercentEncoding(withoutTrailingSlash(path), "/!$&'()*+,:=@");
    return u"file://"_s + QString::fromLatin1(encoded);
}

QString Paths::pathOfFileUrl(const QString& url) {
    const QUrl parsed(url);
    const bool isHere = parsed.host().isEmpty() || parsed.host() == "localhost"_L1;
    if (!parsed.isValid() || parsed.scheme() != "file"_L1 || !isHere || parsed.hasQuery() || parsed.hasFragment()) {
        return {};
    }
    const QString path = parsed.path(QUrl::FullyDecoded);
    return path.startsWith(u'/') && !path.contains(QChar(u'\0')) ? withoutTrailingSlash(path) : QString();
}

} // namespace orv
