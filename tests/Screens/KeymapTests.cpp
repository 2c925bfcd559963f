#include "OrvUI/Keymap.h"
#include "tests/Screens/MainWindow.h"

#include <QDir>
#include <QKeySequence>
#include <QRegularExpression>
#include <QSet>

using namespace Qt::StringLiterals;

namespace orv {

TEST(Keymap, HasWhatTheScreensAskForAndNothingTwice) {
    QSet<QString> ids;
    for (const Keymap::Entry& entry : Keymap::entries()) {
        const QString id = QString::fromLatin1(entry.id);
        EXPECT_FALSE(ids.contains(id)) << entry.id;
        ids.insert(id);
        for (const QVariant& each : Keymap::of(id)) {
            const QString sequence = each.toString()
                                         .replace(QRegularExpression(u"\\d…"_s), QString())
                                         .replace(u"Plus"_s, u"+"_s)
                                         .replace(u"Minus"_s, u"-"_s);
            EXPECT_NE(QKeySequence(sequence, QKeySequence::PortableText)[0].key(), Qt::Key_unknown)
                << sequence.toStdString();
        }
    }
    const QRegularExpression asked(u"Keymap\\.\\w+\\(\"(\\w+)\""_s);
    const QDir screens(test::sourcePath(u"OrvUI/Screens"_s));
    int count = 0;
    for (const QString& file : screens.entryList({u"*.qml"_s})) {
        auto found = asked.globalMatch(QString::fromUtf8(test::readFile(screens.filePath(file))));
        for (; found.hasNext(); ++count) {
            const QString id = found.next().captured(1);
            EXPECT_TRUE(ids.contains(id)) << id.toStdString() << " in " << file.toStdString();
        }
    }
    EXPECT_GT(count, 50);
}

} // namespace orv
