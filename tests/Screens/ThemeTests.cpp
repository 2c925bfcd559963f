#include "OrvUI/Screens/Theme.h"
#include "tests/support/TestSupport.h"

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

} // namespace
} // namespace orv
