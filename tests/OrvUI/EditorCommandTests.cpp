#include "OrvUI/EditorCommand.h"
#include "tests/OrvUI/ModelFixture.h"

using namespace Qt::StringLiterals;

namespace orv {
namespace {

TEST(EditorCommand, NamesTheFileForTheShellAndTheProgramBehindIt) {
    const struct {
        QString line;
        EditorCommand::Place place;
        QString command;
        QString program;
        bool needsTerminal;
    } cases[] = {
        {u"code -g {file}:{line}:{column}"_s, {u"/w/a.ts"_s, 3, 7}, u"code -g '/w/a.ts':3:7"_s, u"code"_s, false},
        {u"kate"_s, {u"/w/it's {line}.txt"_s}, u"kate '/w/it'\\''s {line}.txt'"_s, u"kate"_s, false},
        {u"A=1 /usr/bin/nvim +{line} {file}"_s,
         {u"/w/$(id)"_s},
         u"A=1 /usr/bin/nvim +1 '/w/$(id)'"_s,
         u"/usr/bin/nvim"_s,
         true},
        {u"'/opt/My Editor/ed' -w"_s, {u"/w/a"_s}, u"'/opt/My Editor/ed' -w '/w/a'"_s, u"/opt/My Editor/ed"_s, false},
        {u"A='1 2' /my\\ bin/vi\"m\""_s, {u"/w/a"_s}, u"A='1 2' /my\\ bin/vi\"m\" '/w/a'"_s, u"/my bin/vim"_s, true},
        {u"\"/a \\\"b\\c\""_s, {u"/w/a"_s}, u"\"/a \\\"b\\c\" '/w/a'"_s, u"/a \"b\\c"_s, false},
        {u"emacs -nw"_s, {u"/w/a"_s}, u"emacs -nw '/w/a'"_s, u"emacs"_s, true},
        {u"emacs {file} {file}"_s, {u"/w/{file}"_s}, u"emacs '/w/{file}' '/w/{file}'"_s, u"emacs"_s, false},
    };
    for (const auto& it : cases) {
        EXPECT_EQ(EditorCommand::of(it.line, it.place), it.command) << it.line.toStdString();
        EXPECT_EQ(EditorCommand::program(it.line), it.program) << it.line.toStdString();
        EXPECT_EQ(EditorCommand::needsTerminal(it.line), it.needsTerminal) << it.line.toStdString();
    }
}

class EditorTest : public test::ModelFixture {};

TEST_F(EditorTest, IsStartedWithThePlaceOrSaysThatItIsNotThere) {
    makeModel();
    QList<QUrl> opened;
    model->openUrl = [&](const QUrl& url) {
        opened.append(url);
        return true;
    };
    const QString file = tree.add(u"projects/a b.txt"_s, "x");
    model->openFile(file, 2);
    EXPECT_EQ(opened, QList<QUrl>{QUrl::fromLocalFile(file)}) << "no editor is set";
    const QString note = tree.path(u"note"_s);
    const auto use = [this](const QString& line) {
        model->changeSettings([&line](AppSettings& settings) { settings.editorCommand = line; });
    };
    use(u"printf '%s\\n' {file} {line} > "_s + note + u" #"_s);
    model->openFile(file, 2);
    EXPECT_TRUE(test::waitFor([&] { return test::readFile(note) == file.toUtf8() + "\n2\n"; }));
    QFile::remove(note);
    const QString program = tree.add(u"My Editor/ed"_s, "#!/bin/sh\necho \"$1\" >'" + note.toUtf8() + "'\n");
    QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    use(program);
    model->openFile(file, 2);
    EXPECT_TRUE(test::waitFor([&] { return test::readFile(note) == file.toUtf8() + "\n"; }));
    use(u"no-such-editor {file}"_s);
    model->openFile(file);
    EXPECT_TRUE(test::waitFor([this] { return model->statusIsError(); }));
    EXPECT_THAT(model->statusText().toStdString(), testing::HasSubstr("no-such-editor"));
    use(u"vim {file}"_s);
    model->openFile(file);
    EXPECT_EQ(model->detailTab(), DetailTab::terminal);
    EXPECT_EQ(opened.size(), 1);
}

} // namespace
} // namespace orv
