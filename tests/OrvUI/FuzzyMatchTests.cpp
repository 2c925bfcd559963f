#include "OrvUI/FuzzyMatch.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace orv;

namespace {

/// The text with brackets around what was found: "[sh]o[p]"; empty when it does not fit.
QString marked(const QString& typed, const QString& wanted) {
    const FuzzyPattern pattern(typed);
    const FuzzyText text(wanted);
    if (!pattern.score(text)) {
        return {};
    }
    QString result = wanted;
    const QList<FuzzyRun> runs = pattern.hits(text);
    for (auto run = runs.crbegin(); run != runs.crend(); ++run) {
        result.insert(run->start + run->length, u']').insert(run->start, u'[');
    }
    return result;
}

} // namespace

TEST(FuzzyMatch, MarksTheLettersThatPeopleMean) {
    const struct {
        const char* label;
        QString typed, text, expected;
    } cases[] = {
        {"in order", u"shp"_s, u"shop"_s, u"[sh]o[p]"_s},
        {"out of order", u"phs"_s, u"shop"_s, {}},
        {"more than there is", u"shopp"_s, u"shop"_s, {}},
        {"the beginning of a word rather than the first letter that fits", u"p"_s, u"sketch-pad copy"_s,
         u"sketch-[p]ad copy"_s},
        {"a run rather than letters here and there", u"api"_s, u"a-pin apishop"_s, u"a-pin [api]shop"_s},
        {"humps of capitals", u"ml"_s, u"ShopModelList"_s, u"Shop[M]odel[L]ist"_s},
        {"without regard to case", u"SHOP öl"_s, u"Shop Öl"_s, u"[Shop] [Öl]"_s},
        {"words in any order", u"shop push"_s, u"Push shop"_s, u"[Push] [shop]"_s},
        {"one word is missing", u"shop pull"_s, u"Push shop"_s, {}},
        {"spaces around", u"  shop  "_s, u"shop"_s, u"[shop]"_s},
        {"the first letter far from the rest", u"sxx"_s, u"s-a-b-c-d-e-xx"_s, u"[s]-a-b-c-d-e-[xx]"_s},
        {"composed as typed", u"o\u0308l"_s, u"öl"_s, u"[öl]"_s},
        {"letters left out", u"sttngs"_s, u"Settings"_s, u"[S]e[tt]i[ngs]"_s},
        {"a short name abbreviated", u"stgs"_s, u"Settings"_s, u"[S]et[t]in[gs]"_s},
        {"one of its words abbreviated", u"bknd"_s, u"shop-backend"_s, u"shop-[b]ac[k]e[nd]"_s},
        {"not from the beginning of a word", u"acnd"_s, u"backend"_s, {}},
        {"letters here and there", u"port"_s, u"Projects folder, start at login"_s, {}},
        {"beginnings of words here and there", u"pfsl"_s, u"Projects folder, start at login"_s,
         u"[P]rojects [f]older, [s]tart at [l]ogin"_s},
        {"nothing typed", u" "_s, u"shop"_s, u"shop"_s},
        {"no text", u"a"_s, {}, {}},
        {"a text longer than is looked at", u"z"_s, QString(500, u'a') + u'z', {}},
        {"a word longer than is looked at", QString(30, u'a'), QString(40, u'a'),
         u'[' + QString(24, u'a') + u']' + QString(16, u'a')},
    };
    for (const auto& it : cases) {
        EXPECT_EQ(marked(it.typed, it.text).toStdString(), it.expected.toStdString()) << it.label;
    }
}

TEST(FuzzyMatch, PrefersWhatIsMeant) {
    const struct {
        QString typed, better, worse;
    } cases[] = {
        {u"shop"_s, u"shop"_s, u"shop-admin"_s},
        {u"shop"_s, u"shop-admin"_s, u"old-shop"_s},
        {u"sa"_s, u"shop-admin"_s, u"old-mosaic-tiles"_s},
        {u"shp"_s, u"shop"_s, u"Show projects as folders"_s},
        {u"set"_s, u"Settings"_s, u"Reset the port"_s},
        {u"git"_s, u"Settings: Git"_s, u"Begin title"_s},
        {u"pusho"_s, u"Push shop"_s, u"pump-us-home"_s},
        {u"api"_s, u"api"_s, u"a-p-i"_s},
        {u"bknd"_s, u"old book nodes of demo"_s, u"backend"_s},
        {u"log"_s, u"Logs of shop"_s, u"Stop all services long ago"_s},
    };
    for (const auto& it : cases) {
        const FuzzyPattern pattern(it.typed);
        const auto better = pattern.score(FuzzyText(it.better));
        const auto worse = pattern.score(FuzzyText(it.worse));
        ASSERT_TRUE(better && worse) << it.typed.toStdString();
        EXPECT_GT(*better, *worse) << it.typed.toStdString() << " in " << it.better.toStdString();
    }
}

TEST(FuzzyMatch, TellsHowATextFits) {
    const struct {
        QString typed, text;
        FuzzyFit expected;
    } cases[] = {
        {u" SHOP"_s, u"shop"_s, FuzzyFit::whole},
        {u"new  term"_s, u"New terminal in shop"_s, FuzzyFit::beginning},
        {u"shop new"_s, u"New terminal in shop"_s, FuzzyFit::words},
        {u"sketch pad"_s, u"sketch-pad"_s, FuzzyFit::words},
        {u"he"_s, u"the-old-helm"_s, FuzzyFit::words},
        {u"op"_s, u"shop"_s, FuzzyFit::letters},
        {u"shp"_s, u"shop"_s, FuzzyFit::letters},
    };
    for (const auto& it : cases) {
        EXPECT_EQ(FuzzyPattern(it.typed).fit(FuzzyText(it.text)), it.expected) << it.typed.toStdString();
    }
}

TEST(FuzzyMatch, FindsTheSameInATextOfParts) {
    const QString parts[] = {u"New terminal in "_s, u"fieldNotes 2"_s, u" (main)"_s};
    FuzzyText joined(u"something else"_s);
    joined.clear();
    QString whole;
    for (const QString& part : parts) {
        joined.append(FuzzyText(part));
        whole += part;
    }
    const FuzzyText once(whole);
    for (const QString& typed : {u"ntn"_s, u"new fn2"_s, u"main"_s, u"xyz"_s}) {
        const FuzzyPattern pattern(typed);
        EXPECT_EQ(pattern.score(joined), pattern.score(once)) << typed.toStdString();
        EXPECT_EQ(pattern.hits(joined), pattern.hits(once)) << typed.toStdString();
        EXPECT_TRUE(pattern.mayBeIn(once.letters) || !pattern.score(once)) << typed.toStdString();
    }
}
