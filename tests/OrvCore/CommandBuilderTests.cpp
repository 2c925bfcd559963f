#include "OrvCore/CommandBuilder.h"
#include "OrvCore/OverrideStore.h"
#include "tests/support/TestSupport.h"

#include <QProcess>

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

namespace {

void addAll(test::TemporaryTree& tree, const QByteArray& files) {
    for (const QByteArray& file : files.simplified().split(' ')) {
        tree.add(QString::fromUtf8(file.isEmpty() ? "unrelated" : file), file == "pubspec.yaml" ? "flutter:" : "");
    }
}

} // namespace

TEST(CommandBuilder, QuotesSoThatAShellGivesTheTextBack) {
    EXPECT_EQ(CommandBuilder::quote(u"it's"_s), u"'it'\\''s'"_s);
    for (const QString& text : {u""_s, u"plain"_s, u"it's 'two'"_s, u"$HOME `id` \\ \"x\" * \n ü"_s, u"-n"_s}) {
        QProcess shell;
        shell.start(u"/bin/sh"_s, {u"-c"_s, "printf '%s|' "_L1 + CommandBuilder::quote(text) + " end"_L1});
        ASSERT_TRUE(shell.waitForFinished());
        EXPECT_EQ(QString::fromUtf8(shell.readAllStandardOutput()), text + "|end|"_L1);
    }
}

TEST(CommandBuilder, MakesTheRunPart) {
    struct Case {
        const char* label;
        QByteArray files; ///< with blanks between them
        ServiceKind kind;
        std::optional<QString> framework;
        std::optional<QString> device;
        QString expected;
    };
    const auto none = std::optional<QString>();
    const std::vector<Case> cases{
        {"harmless device", "pubspec.yaml", ServiceKind::flutter, none, u"a.B_9:@/=+-"_s,
         u"flutter run -d a.B_9:@/=+-"_s},
        {"device with a blank", "pubspec.yaml", ServiceKind::flutter, none, u"My iPhone"_s,
         u"flutter run -d 'My iPhone'"_s},
        {"device that ends a line", "pubspec.yaml", ServiceKind::flutter, none, u"a\n"_s, u"flutter run -d 'a\n'"_s},
        {"empty device", "pubspec.yaml", ServiceKind::flutter, none, u""_s, u"flutter run -d ''"_s},
        {"device of another kind", "pubspec.yaml Cargo.toml", ServiceKind::app, none, u"x"_s, u"cargo run"_s},
        {"by framework", "Cargo.toml mix.exs", ServiceKind::app, u"Elixir"_s, none, u"mix run --no-halt"_s},
        {"unknown framework gives the first", "Cargo.toml mix.exs", ServiceKind::app, u"elixir"_s, none,
         u"cargo run"_s},
        {"fallback counts", "index.html", ServiceKind::frontend, none, none, u"python3 -m http.server 8000"_s},
        {"docker gone", "", ServiceKind::docker, u"Docker"_s, none, u"docker compose up"_s},
        {"flutter gone", "", ServiceKind::flutter, none, u"x y"_s, u"flutter run -d 'x y'"_s},
        {"package that can't be read", "package.json venv/bin/python", ServiceKind::backend, u"FastAPI"_s, none,
         u"npm run dev"_s},
        {"fastapi gone, venv first", ".venv/bin/python venv/bin/python", ServiceKind::backend, u"FastAPI"_s, none,
         u"venv/bin/python -m uvicorn main:app --reload"_s},
        {"all gone", ".venv/bin/python", ServiceKind::app, u"fastapi"_s, none,
         u".venv/bin/python manage.py runserver"_s},
        {"nothing at all", "", ServiceKind::frontend, none, none, u"python3 manage.py runserver"_s},
    };
    for (const Case& row : cases) {
        test::TemporaryTree tree;
        addAll(tree, row.files);
        EXPECT_EQ(CommandBuilder::body(row.kind, tree.path(), row.framework, row.device), row.expected) << row.label;
    }
    EXPECT_EQ(
        CommandBuilder::command(ServiceKind::docker, u"/it's/a b"_s, none, none),
        u"cd '/it'\\''s/a b' && docker compose up"_s);
}

TEST(CommandBuilder, DecidesWhetherToInstall) {
    struct Case {
        const char* label;
        QByteArray files; ///< with blanks between them
        ServiceKind kind;
        bool needed;
        QString install;
    };
    const QString pip = u"python3 -m venv .venv && .venv/bin/python -m pip install -r requirements.txt"_s;
    const std::vector<Case> cases{
        {"python", "requirements.txt main.py", ServiceKind::app, true, pip},
        {"venv counts as .venv", "requirements.txt main.py venv/", ServiceKind::app, false, pip},
        {"marker there", "mix.exs deps/", ServiceKind::app, false, u"mix deps.get"_s},
        {"no marker known", "Gemfile config.ru", ServiceKind::backend, false, u"bundle install"_s},
        {"no install known", "Cargo.toml", ServiceKind::app, false, u"npm install"_s},
        {"no stack", "", ServiceKind::frontend, false, u"npm install"_s},
    };
    for (const Case& row : cases) {
        test::TemporaryTree tree;
        addAll(tree, row.files);
        const ServiceTarget target{row.kind, tree.path(), {}, {}, {}};
        EXPECT_EQ(CommandBuilder::needsInstall(target), row.needed) << row.label;
        EXPECT_EQ(
            CommandBuilder::install(target), "cd "_L1 + CommandBuilder::quote(tree.path()) + " && "_L1 + row.install)
            << row.label;
    }
}

TEST(OverrideStore, FinishesATargetWithTheUsersCorrection) {
    test::TemporaryTree tree;
    tree.add(u"Makefile"_s, "dev:");
    tree.add(u"compose.yml"_s);
    const auto stacks = StackDetector::detect(tree.path(), Fallbacks::allowed);
    const QString cd = "cd "_L1 + CommandBuilder::quote(tree.path()) + " && "_L1;
    struct Case {
        const char* label;
        std::optional<Override> correction;
        QString command; ///< before
        ServiceKind kind;
        QString expected;
        std::optional<int> port;
    };
    const std::vector<Case> cases{
        {"none", {}, {}, ServiceKind::docker, cd + "docker compose up"_L1, {}},
        {"command that was there", {}, u"mine"_s, ServiceKind::docker, u"mine"_s, {}},
        {"port alone", Override{{}, {}, 81}, {}, ServiceKind::docker, cd + "docker compose up"_L1, 81},
        {"another kind", Override{ServiceKind::app, {}, {}}, {}, ServiceKind::app, cd + "make dev"_L1, {}},
        {"another kind and command", Override{ServiceKind::app, u"x"_s, 1}, {}, ServiceKind::app, u"x"_s, 1},
        {"the same kind", Override{ServiceKind::docker, {}, {}}, u"mine"_s, ServiceKind::docker, u"mine"_s, {}},
    };
    OverrideStore store(tree.path(u"overrides.json"_s));
    for (const Case& row : cases) {
        ASSERT_TRUE(store.set(OverrideStore::key(tree.path(), ServiceKind::docker), row.correction));
        const ServiceTarget target{ServiceKind::docker, tree.path(), u"Docker"_s, row.command, {}};
        const ServiceTarget finished = store.finish(target, stacks);
        EXPECT_EQ(finished.command, row.expected) << row.label;
        EXPECT_EQ(finished.kind, row.kind) << row.label;
        EXPECT_EQ(finished.port, row.port) << row.label;
    }
}
