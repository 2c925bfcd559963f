#include "OrvUI/GitIdentityForm.h"
#include "OrvUI/OnboardingModel.h"
#include "tests/OrvUI/PartsFixture.h"

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;

using OnboardingTest = PartsTest;

TEST_F(OnboardingTest, OnboardingWritesEverythingAtOnceAtItsEnd) {
    addInstalled(u"clients/one"_s, "express", up(4110));
    addInstalled(u"clients/two"_s, "vite", up(4110));
    addInstalled(u"shop"_s, "vite", up(4110));
    tree.add(u"projects/clients/one/.git/"_s);
    tree.add(u"projects/clients/two/.git/"_s);
    EXPECT_TRUE(model->needsOnboarding());
    OnboardingModel& pages = *model->onboarding();
    EXPECT_TRUE(finishes(pages.loadExisting()));
    EXPECT_EQ(pages.gitEmail(), u"old@example.org"_s);
    pages.setName(u"  "_s);
    pages.next();
    pages.next();
    EXPECT_EQ(pages.step(), 1) << "nobody has no name";
    pages.setName(u" Sam "_s);
    pages.setFolder(tree.add(u"no-folder"_s, "text"));
    EXPECT_FALSE(pages.folderExists() || pages.canMakeFolder());
    pages.setFolder(tree.path(u"made/here"_s));
    EXPECT_TRUE(pages.canMakeFolder());
    pages.makeFolder();
    EXPECT_TRUE(pages.folderExists());
    pages.setFolder(tree.path(u"nowhere"_s));
    pages.next();
    EXPECT_FALSE(pages.canAdvance());
    EXPECT_TRUE(finishes(pages.scanFolder()));
    EXPECT_EQ(pages.detectedCount(), std::nullopt);
    pages.setFolder(tree.path());
    const QFuture<void> whole = pages.scanFolder();
    EXPECT_TRUE(pages.isScanning());
    pages.setFolder(QUrl::fromLocalFile(root + u'/').toString());
    EXPECT_FALSE(pages.isScanning()) << "nobody wants to know any more";
    const QFuture<void> first = pages.scanFolder();
    EXPECT_TRUE(finishes(pages.scanFolder()));
    EXPECT_TRUE(finishes(whole) && finishes(first));
    EXPECT_EQ(pages.detectedCount(), 3);
    EXPECT_EQ(pages.detectedFolders(), 1);
    becomes(*pages.found(), {"name", "stackLine"}, u"one|Express; two|Vite; shop|Vite"_s);
    pages.setGitName(u"Sam Doe"_s);
    pages.setTheme(2);
    pages.setTheme(99);
    pages.setNotifications(true);
    pages.setLaunchAtLogin(true);
    EXPECT_EQ(model->settings().settings().theme, ThemeID::ember) << "nothing is written yet";
    EXPECT_TRUE(finishes(pages.finish()));
    const AppSettings& settings = model->settings().settings();
    EXPECT_EQ(settings.displayName, u"Sam"_s);
    EXPECT_EQ(settings.scanRoot, root);
    EXPECT_EQ(settings.theme, ThemeID::forest);
    EXPECT_TRUE(settings.notificationsEnabled);
    EXPECT_TRUE(startsAtLogin);
    EXPECT_FALSE(model->needsOnboarding());
    EXPECT_EQ(model->projects().size(), 3);
    EXPECT_TRUE(readFile(gitConfig).contains("name = Sam Doe")) << readFile(gitConfig).constData();
    pages.setGitName({});
    pages.setGitEmail(u" "_s);
    const QByteArray before = readFile(gitConfig);
    EXPECT_TRUE(finishes(pages.finish()));
    EXPECT_EQ(readFile(gitConfig), before);
    const QByteArray twoNames = "[user]\n\tname = A\n\tname = B\n\temail = b@example.org\n";
    tree.add(u"gitconfig"_s, twoNames);
    EXPECT_TRUE(finishes(pages.loadExisting()));
    EXPECT_TRUE(finishes(pages.finish()));
    EXPECT_EQ(readFile(gitConfig), twoNames) << "git knows it already";
    EXPECT_FALSE(model->statusMessage()) << model->statusMessage()->text.toStdString();
}

TEST_F(OnboardingTest, TheIdentityOfCommitsIsSetOneWordAtATime) {
    GitIdentityForm form;
    form.setModel(model.get());
    EXPECT_TRUE(waitFor([&] { return form.isRead(); }));
    EXPECT_EQ(form.name() + u' ' + form.email(), u"Old old@example.org"_s);
    form.setName(u" "_s);
    form.setName(u" Ada "_s);
    EXPECT_TRUE(waitFor([&] { return readFile(gitConfig).contains("name = Ada\n"); }));
    EXPECT_TRUE(readFile(gitConfig).contains("email = old@example.org")) << readFile(gitConfig).constData();
    const QByteArray twoMails = "[user]\n\temail = a@example.org\n\temail = b@example.org\n";
    tree.add(u"gitconfig"_s, twoMails);
    form.setEmail(u"ada@example.org"_s);
    EXPECT_TRUE(waitFor([&] { return model->statusMessage() && model->statusMessage()->isError; })) << "git refused";
    EXPECT_TRUE(waitFor([&] { return form.email() == u"b@example.org"; })) << "what git has stands again";
}
