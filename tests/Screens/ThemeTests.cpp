#include "OrvUI/Screens/CodeText.h"
#include "OrvUI/Screens/SystemLook.h"
#include "OrvUI/Screens/Theme.h"
#include "tests/support/TestSupport.h"

#include <QFontMetricsF>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QtMath>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

const QStringList themeNames{u"ember"_s, u"ocean"_s, u"forest"_s, u"violet"_s, u"graphite"_s};

/// WCAG 2.1, relative luminance.
double luminance(const QColor& color) {
    const auto channel = [](double value) {
        return value <= 0.03928 ? value / 12.92 : qPow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(color.redF()) + 0.7152 * channel(color.greenF()) + 0.0722 * channel(color.blueF());
}

double contrast(const QColor& a, const QColor& b) {
    const double x = luminance(a);
    const double y = luminance(b);
    return (qMax(x, y) + 0.05) / (qMin(x, y) + 0.05);
}

TEST(Theme, HasTheColoursOfTheTokens) {
    const QByteArray file = test::readFile(test::sourcePath(u"OrvUI/Screens/theme/tokens.json"_s));
    const QJsonObject themes = QJsonDocument::fromJson(file)[u"themes"].toObject();
    ASSERT_EQ(themes.size(), themeNames.size());
    Theme theme(nullptr);
    int compared = 0;
    for (int index = 0; index < themeNames.size(); ++index) {
        for (const bool dark : {true, false}) {
            theme.setTheme(index);
            theme.setDark(dark);
            const QJsonObject tokens = themes[themeNames[index]][dark ? u"dark" : u"light"].toObject();
            for (auto token = tokens.begin(); token != tokens.end(); ++token) {
                if (!token->isString() || token.key() == u"scrim") {
                    continue;
                }
                const QVariant held = theme.property(token.key().toUtf8().constData());
                EXPECT_EQ(held.value<QColor>().name().toUpper(), token->toString())
                    << themeNames[index].toStdString() << (dark ? " dark " : " light ") << token.key().toStdString();
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 350);
}

TEST(Theme, HasFiguresOfOneWidthAndTheSameLetters) {
    const Theme theme(nullptr);
    for (const auto role : {Theme::Body, Theme::BodyStrong, Theme::Section, Theme::Small, Theme::Caption}) {
        const QFontMetricsF letters(theme.font(role));
        const QFontMetricsF figures(theme.figures(role));
        EXPECT_NE(letters.horizontalAdvance(u"1"_s), letters.horizontalAdvance(u"0"_s)) << "else there is no need";
        for (const QChar digit : u"0123456789"_s) {
            EXPECT_EQ(figures.horizontalAdvance(digit), figures.horizontalAdvance(u'0')) << role << digit.toLatin1();
        }
        EXPECT_EQ(figures.horizontalAdvance(u"1 file, 1 of 8"_s), figures.horizontalAdvance(u"8 file, 8 of 1"_s));
        EXPECT_EQ(figures.horizontalAdvance(u"files of АБВ"_s), letters.horizontalAdvance(u"files of АБВ"_s)) << role;
        EXPECT_EQ(figures.ascent(), letters.ascent()) << role;
        EXPECT_EQ(figures.descent(), letters.descent()) << role;
    }
    EXPECT_EQ(theme.figures(Theme::Mono), theme.font(Theme::Mono)) << "whose figures are of one width";
}

TEST(Theme, KeepsTextReadableOnWhatItStandsOn) {
    struct Pair {
        const char* ink;
        const char* ground;
        double least;
    };
    const Pair pairs[] = {
        {"text", "window", 4.5},     {"text2", "surface", 4.5},        {"text3", "surface", 4.5},
        {"text3", "sidebar", 4.5},   {"onAccent", "accent", 4.5},      {"danger", "surface", 4.5},
        {"warning", "surface", 4.5}, {"accentText", "selection", 4.5}, {"text", "selection", 4.5},
        {"tipFg", "tipBg", 4.5},     {"focus", "window", 3},           {"focus", "sidebar", 3},
    };
    Theme theme(nullptr);
    for (int index = 0; index < themeNames.size(); ++index) {
        for (const bool dark : {true, false}) {
            theme.setTheme(index);
            theme.setDark(dark);
            for (const Pair& pair : pairs) {
                const double found =
                    contrast(theme.property(pair.ink).value<QColor>(), theme.property(pair.ground).value<QColor>());
                EXPECT_GE(found, pair.least) << themeNames[index].toStdString() << (dark ? " dark " : " light ")
                                             << pair.ink << " on " << pair.ground;
            }
        }
    }
}

TEST(Theme, NotifiesOnlyAChange) {
    Theme theme(nullptr);
    QSignalSpy colors(&theme, &Theme::colorsChanged);
    theme.setDark(true);
    theme.setTheme(0);
    theme.setTheme(5);
    theme.setTheme(-1);
    EXPECT_EQ(colors.count(), 0);
    theme.setTheme(3);
    theme.setDark(false);
    EXPECT_EQ(colors.count(), 2);
}

TEST(Theme, IsStrongerWhereTheSystemAsksForContrast) {
    Theme theme(nullptr);
    for (int index = 0; index < themeNames.size(); ++index) {
        for (const bool dark : {true, false}) {
            theme.setTheme(index);
            theme.setDark(dark);
            theme.setHigherContrast(false);
            const QColor edge = theme.borderStrong();
            const QColor faint = theme.text3();
            const QColor text = theme.text2();
            EXPECT_EQ(theme.softEdge(), 0);
            theme.setHigherContrast(true);
            EXPECT_EQ(theme.border(), edge);
            EXPECT_EQ(theme.borderStrong(), faint);
            EXPECT_EQ(theme.text3(), text);
            EXPECT_EQ(theme.text2(), text);
            EXPECT_EQ(theme.softEdge(), 1);
            // Edges of controls are to be told from what they stand on.
            EXPECT_GE(contrast(theme.borderStrong(), theme.surface()), 3)
                << themeNames[index].toStdString() << (dark ? " dark" : " light");
        }
    }
}

#ifdef Q_OS_LINUX
TEST(CodeText, MarksTheCodeInWhatAnAgentSays) {
    struct Case {
        QString said;
        QString shown;
    };
    const QString code = u"<font color=\"%1\">"_s.arg(Theme::instance()->text().name());
    const QList<Case> cases{
        {u"plain, 1 < 2 && \"so\""_s, u"plain, 1 &lt; 2 &amp;&amp; &quot;so&quot;"_s},
        {u"run `a<b` and **do** it"_s, u"run %1a&lt;b</font> and <b>do</b> it"_s.arg(code)},
        {u"a ` alone, ** alone"_s, u"a ` alone, ** alone"_s},
        {u"nothing in `` and ****"_s, u"nothing in `` and ****"_s},
        {u"`**` is code"_s, u"%1**</font> is code"_s.arg(code)},
        {u"one\ntwo"_s, u"one<br>two"_s},
        {u"so:\n```sh\n  **x** <y>\n```\nend"_s,
         u"so:<br>%1&nbsp;&nbsp;**x**&nbsp;&lt;y&gt;</font><br>end"_s.arg(code)},
        {u"<img src='http://host/x'>"_s, u"&lt;img src='http://host/x'&gt;"_s},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(CodeText::prose(each.said, true, 0), each.shown) << each.said.toStdString();
    }
}

TEST(SystemLook, TakesWhatTheDesktopSays) {
    const struct {
        QString group;
        QString key;
        QVariant value;
        bool isHigher;
    } steps[] = {
        {u"org.freedesktop.appearance"_s, u"contrast"_s, 1U, true},
        {u"org.gnome.desktop.a11y.interface"_s, u"high-contrast"_s, true, true},
        {u"org.freedesktop.appearance"_s, u"contrast"_s, 0U, true},
        {u"org.gnome.desktop.a11y.interface"_s, u"high-contrast"_s, false, false},
        {u"org.gnome.desktop.a11y.interface"_s, u"cursor-size"_s, 48, false},
    };
    SystemLook look;
    for (const auto& step : steps) {
        const bool before = look.higherContrast();
        QSignalSpy changes(&look, &SystemLook::changed);
        ASSERT_TRUE(QMetaObject::invokeMethod(
            &look, "portalChanged", Q_ARG(QString, step.group), Q_ARG(QString, step.key),
            Q_ARG(QDBusVariant, QDBusVariant(step.value))));
        EXPECT_EQ(look.higherContrast(), step.isHigher) << step.key.toStdString();
        EXPECT_EQ(changes.count(), before == step.isHigher ? 0 : 1) << step.key.toStdString();
    }
}
#endif

} // namespace
} // namespace orv
