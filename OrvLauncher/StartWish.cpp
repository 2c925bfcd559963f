#include "StartWish.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct Member {
    QLatin1StringView name;
    QString StartWish::* text;
};
constexpr std::array members{
    Member{"url"_L1, &StartWish::url}, Member{"page"_L1, &StartWish::page},
    Member{"activation"_L1, &StartWish::activation}};
constexpr auto panel = "panel"_L1;
constexpr auto inTray = "inTray"_L1;

} // namespace

std::optional<StartWish> StartWish::of(const QStringList& words) {
    StartWish wish;
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString& word = words[i];
        const bool hasValue = i + 1 < words.size();
        if (word.startsWith(u"orvlauncher:"_s)) {
            wish.url = word;
        } else if (word == u"-OrvStartPage"_s && hasValue) {
            wish.page = words[++i];
        } else if (word == u"-OrvExportIllustrations"_s && hasValue) {
            wish.illustrations = QDir::current().absoluteFilePath(words[++i]);
        } else if (word == u"toggle"_s && words.size() == 1) {
            wish.togglesPanel = true;
        } else if (word == u"-OrvInTray"_s) {
            wish.staysInTray = true;
        } else {
            return {};
        }
    }
    return wish;
}

StartWish StartWish::asFirst() const {
    StartWish wish = *this;
    wish.togglesPanel = false;
    return wish;
}

QByteArray StartWish::toMessage() const {
    QJsonObject json{{panel, togglesPanel}, {inTray, staysInTray}};
    for (const Member& member : members) {
        json.insert(member.name, this->*member.text);
    }
    return QJsonDocument(json).toJson(QJsonDocument::Compact);
}

StartWish StartWish::ofMessage(const QByteArray& message) {
    const QJsonObject json = QJsonDocument::fromJson(message).object();
    StartWish wish{.togglesPanel = json[panel].toBool(), .staysInTray = json[inTray].toBool()};
    for (const Member& member : members) {
        wish.*member.text = json[member.name].toString();
    }
    return wish;
}

} // namespace orv
