#include "NamedProjects.h"

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace orv::bench {

void addNamedProjects(const QString& root, int count) {
    const QStringList first{u"atlas"_s, u"harbor"_s, u"pocket"_s, u"field"_s, u"ledger"_s, u"shop"_s, u"pulse"_s};
    const QStringList second{u"billing"_s, u"notes"_s, u"admin"_s, u"docs"_s, u"mail"_s};
    const QStringList third{u"api"_s, u"web"_s, u"worker"_s};
    for (int number = 0; number < count; ++number) {
        const QString name =
            QStringList{
                first[number % first.size()], second[number / 7 % second.size()], third[number / 35 % third.size()],
                QString::number(number)}
                .join(u'-');
        QDir(root).mkpath(name + u"/node_modules"_s);
        QFile manifest(root + u'/' + name + u"/package.json"_s);
        if (manifest.open(QFile::WriteOnly)) {
            manifest.write(R"({"scripts": {"dev": "vite"}, "dependencies": {"vite": "5"}})");
        }
    }
}

} // namespace orv::bench
