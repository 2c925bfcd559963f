#include "OrvCore/StackDetector.h"
#include "tests/support/TestSupport.h"

#include <QElapsedTimer>
#include <QFile>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace orv;
using namespace Qt::StringLiterals;

namespace {

struct Case {
    const char* label;
    QByteArray files;     ///< "path" or "path=content", with "; " between them
    std::string expected; ///< "kind | framework | run | install | marker" of each stack, without what is absent
    Fallbacks fallbacks = Fallbacks::allowed;
};

std::string described(const QList<DetectedStack>& stacks) {
    QStringList lines;
    for (const DetectedStack& stack : stacks) {
        QStringList fields{rawValue(stack.kind), stack.framework, stack.run};
        for (const auto& field : {stack.install, stack.installMarker}) {
            fields += field ? QStringList{*field} : QStringList();
        }
        lines += fields.join(u" | "_s);
    }
    return lines.join(u'\n').toStdString();
}

void check(const std::vector<Case>& cases, const QString& folder = {}) {
    for (const Case& row : cases) {
        test::TemporaryTree tree;
        for (qsizetype at = 0; at < row.files.size();) {
            const qsizetype end = row.files.indexOf("; ", at) < 0 ? row.files.size() : row.files.indexOf("; ", at);
            const QByteArray file = row.files.mid(at, end - at);
            const qsizetype equals = file.indexOf('=') < 0 ? file.size() : file.indexOf('=');
            tree.add(QString::fromUtf8(file.first(equals)), file.mid(equals + 1));
            at = end + 2;
        }
        EXPECT_EQ(described(StackDetector::detect(tree.path(folder), row.fallbacks)), row.expected) << row.label;
    }
}

/// A package.json.
QByteArray package(const QByteArray& dependencies, const QByteArray& scripts = "\"dev\": \"x\"") {
    return "package.json={\"scripts\": {" + scripts + "}, \"devDependencies\": {" + dependencies + "}}";
}

const std::string npm = " | npm install | node_modules";
const std::string pip = " | python3 -m venv .venv && .venv/bin/python -m pip install -r requirements.txt | .venv";
const std::string makeDev = "app | Make | make dev";

} // namespace

TEST(StackDetector, ReadsJavaScriptPackages) {
    const QByteArray bothTables =
        R"(package.json={"main": "x", "scripts": {"dev": "x"}, "dependencies": {"express": "1"},
                                     "devDependencies": {"vite": "1"}})";
    check({
        {"table order, not dependency order", package(R"("react": "1", "next": "1")"),
         "frontend | Next.js | npm run dev" + npm},
        {"front-end table before back-end table", bothTables, "frontend | Vite | npm run dev" + npm},
        {"start under npm", package(R"("koa": "1")", R"("serve": "x", "start": "x")"),
         "backend | Koa | npm start" + npm},
        {"start under bun", package(R"("hono": "1")", R"("start": "x")") + "; bun.lock; yarn.lock",
         "backend | Hono | bun run start | bun install | node_modules"},
        {"binary bun lock before pnpm's", package("") + "; bun.lockb; pnpm-lock.yaml",
         "frontend | Node | bun run dev | bun install | node_modules"},
        {"serve under yarn", package("", R"("serve": "x")") + "; yarn.lock",
         "frontend | Node | yarn run serve | yarn install | node_modules"},
        {"a main entry gives its own name", R"(package.json={"main": "src/my app.js", "dependencies": {"koa": "1"}})",
         "backend | Node | node 'src/my app.js'" + npm},
        {"nothing to run", package("", R"("test": "x")"), ""},
        {"a script that is no text", R"(package.json={"scripts": {"dev": 1}, "dependencies": ["vite"]})", ""},
        {"byte-order mark", package(R"("astro": "1")").insert(13, "\xEF\xBB\xBF"),
         "frontend | Astro | npm run dev" + npm},
        {"bytes that are not UTF-8", package(R"("vue": "1")", "\"dev\": \"x\", \"caf\xE9\": \"\xFF\""),
         "frontend | Vue | npm run dev" + npm},
        {"malformed", R"(package.json={"scripts": {"dev": "x"},}; Makefile=dev:)", makeDev},
        {"list instead of an object", "package.json=[]", ""},
        {"compose file beside it", package(R"("vite": "1")") + "; compose.yaml; docker-compose.yml",
         "frontend | Vite | npm run dev" + npm + "\ndocker | Docker | docker compose up"},
    });
}

TEST(StackDetector, TakesTheInstallFromTheEnclosingWorkspace) {
    const QByteArray site = "; packages/here/" + package(R"("vite": "1")");
    check(
        {
            {"workspaces in package.json",
             R"(package.json={"workspaces": []}; pnpm-lock.yaml; packages/here/yarn.lock)" + site,
             "frontend | Vite | pnpm run dev | cd ../.. && pnpm install | ../../node_modules"},
            {"pnpm's own file, a package between", "pnpm-workspace.yaml; yarn.lock; packages/package.json={}" + site,
             "frontend | Vite | yarn run dev | cd ../.. && yarn install | ../../node_modules"},
            {"nearest root",
             R"(pnpm-workspace.yaml; packages/package.json={"workspaces": {}}; packages/bun.lock)" + site,
             "frontend | Vite | bun run dev | cd .. && bun install | ../node_modules"},
            {"no root", R"(package.json={"workspaces": null}; packages/here/pnpm-workspace.yaml)" + site,
             "frontend | Vite | npm run dev" + npm},
        },
        u"packages/here"_s);
    EXPECT_EQ(StackDetector::relativeUp(u"/a/b/c d/e"_s, u"/a/b"_s), u"../.."_s);
}

TEST(StackDetector, ReadsDenoAndPython) {
    const QByteArray commented = R"(deno.jsonc={ // a
        "a": "// no comment, \" /* nor this */", /* , */
        "tasks": { "start": ["x", /* } */ ], },
    })";
    const QByteArray utf16(
        "requirements.txt=\xFF\xFE"
        "f\0l\0a\0s\0k\0",
        29);
    check({
        {"deno: dev before start", R"(deno.json={"tasks": {"start": "x", "dev": "y"}})", "app | Deno | deno task dev"},
        {"deno: comments and trailing commas", commented, "app | Deno | deno task start"},
        {"deno: a broken file leaves the other", "deno.json={; deno.jsonc={}; mod.ts; server.ts",
         "app | Deno | deno run -A mod.ts"},
        {"deno: comment without end", "deno.json={} /* ; main.ts", "app | Deno | deno run -A main.ts"},
        {"django before fastapi", "manage.py; requirements.txt=fastapi",
         "backend | Django | python3 manage.py runserver" + pip},
        {"django without a manifest", "manage.py", "backend | Django | python3 manage.py runserver"},
        {"fastapi, module in a folder, .venv before venv",
         "requirements.txt=FastAPI==1; app/main.py; app.py; venv/bin/python; .venv/bin/python",
         "backend | FastAPI | .venv/bin/python -m uvicorn app.main:app --reload" + pip},
        {"fastapi under uv", "pyproject.toml=fastapi; uv.lock; poetry.lock",
         "backend | FastAPI | uv run python -m uvicorn main:app --reload | uv sync | .venv"},
        {"flask under poetry", "pyproject.toml=[tool.poetry]\nflask = 1; main.py",
         "backend | Flask | poetry run python -m flask --app main run | poetry install | .venv"},
        {"flask without a script", "requirements.txt=flask", "backend | Flask | python3 -m flask --app app run" + pip},
        {"flask in UTF-16", utf16, "backend | Flask | python3 -m flask --app app run" + pip},
        {"streamlit", "requirements.txt=streamlit; main.py; app.py",
         "frontend | Streamlit | python3 -m streamlit run app.py" + pip},
        {"streamlit without a script", "requirements.txt=streamlit; run.py", ""},
        {"plain python project", "pyproject.toml; bot.py; run.py",
         "app | Python | python3 run.py | python3 -m venv .venv && .venv/bin/python -m pip install -e . | .venv"},
    });
}

TEST(StackDetector, ReadsGoPackages) {
    const std::string plain = "app | Go | go run .";
    check({
        {"main at the root", "go.mod=github.com/gin-gonic/gin; server.go=package main\n", "backend | Gin | go run ."},
        {"comments before the clause", "go.mod; a.go=// package x\r\n/* package\n y */ package\tmain;func main() {}",
         plain},
        {"ignored by a build constraint", "go.mod; gen.go=//go:build ignore\n\npackage main\n", ""},
        {"ignored in the old form", "go.mod; gen.go=// +build ignore\n\npackage main\n", ""},
        {"another constraint", "go.mod; a.go=//go:build linux\n\npackage main", plain},
        {"a test is none", "go.mod; a_test.go=package main\n", ""},
        {"no such clause", "go.mod; a.go=package mainly\n; b.go=package; c.go=/* ; d.go=packagemain", ""},
        {"first folder under cmd in ascending order",
         "go.mod=github.com/go-chi/chi; a.go=package a; cmd/a/a.go=package a; cmd/web/m.go=package main; "
         "cmd/b2/m.go=package main",
         "backend | Chi | go run ./cmd/b2"},
        {"without go.mod", "a.go=package main", ""},
    });
}

TEST(StackDetector, ReadsTheOtherManifests) {
    check({
        {"rails", "Gemfile; config/application.rb; config.ru; bin/rails",
         "backend | Rails | bin/rails server | bundle install"},
        {"rails alone", "Gemfile; config/application.rb",
         "backend | Rails | bundle exec rails server | bundle install"},
        {"rack", "Gemfile; config.ru", "backend | Rack | bundle exec rackup | bundle install"},
        {"gems alone", "Gemfile", ""},
        {"laravel", "artisan; composer.json; index.php",
         "backend | Laravel | php artisan serve | composer install | vendor"},
        {"php in public", "public/index.php", "backend | PHP | php -S localhost:8000 -t public"},
        {"rust", "Cargo.toml=rocket axum", "backend | Rust · Axum | cargo run"},
        {"rust program", "Cargo.toml", "app | Rust | cargo run"},
        {"maven", "pom.xml=spring-boot; mvnw; build.gradle=org.springframework.boot",
         "backend | Spring Boot | ./mvnw spring-boot:run"},
        {"gradle in Kotlin", "pom.xml; build.gradle; build.gradle.kts=org.springframework.boot",
         "backend | Spring Boot | gradle bootRun"},
        {"first .csproj decides", "b.csproj=Microsoft.NET.Sdk.Web; a.csproj",
         "app | .NET | dotnet run | dotnet restore | obj"},
        {"asp.net", "b.csproj=Microsoft.NET.Sdk.Web", "backend | ASP.NET | dotnet run | dotnet restore | obj"},
        {"phoenix", "mix.exs={:phoenix, 1}", "backend | Phoenix | mix phx.server | mix deps.get | deps"},
        {"elixir", "mix.exs", "app | Elixir | mix run --no-halt | mix deps.get | deps"},
        {"swift", "Package.swift=.executable(name:", "app | Swift | swift run"},
        {"swift library", "Package.swift=.library(", ""},
        {"flutter", "pubspec.yaml=flutter:; lib/main.dart",
         "flutter | Flutter | flutter run | flutter pub get | .dart_tool"},
        {"dart", "pubspec.yaml; lib/main.dart", "app | Dart | dart run | dart pub get | .dart_tool"},
        {"several in their order", "Cargo.toml; go.mod; a.go=package main; index.php; public/index.php; Makefile=dev:",
         "backend | PHP | php -S localhost:8000\napp | Go | go run .\napp | Rust | cargo run"},
    });
}

TEST(StackDetector, FallsBackOnlyWhenAllowedAndNothingElseMatched) {
    check({
        {"procfile", "Procfile=worker: a\nweb:  run $PORT \r\nweb: b; Makefile=dev:", "backend | Procfile | run $PORT"},
        {"procfile without web", "Procfile=worker: a; Makefile=run:\ndev: run\n\techo", makeDev},
        {"several targets of one rule", "Makefile=serve start : x; index.html", "app | Make | make start"},
        {"no target", "Makefile=dev := 1\nserve ::= 2\n\trun: x\n start: y\n# dev: z\nrun = a:b", ""},
        {"static site", "index.html", "frontend | Static site | python3 -m http.server 8000"},
        {"static site refused", "index.html", "", Fallbacks::refused},
        {"with a compose file", "Makefile=dev:; compose.yml", makeDev + "\ndocker | Docker | docker compose up"},
        {"refused with one", "Makefile=dev:; compose.yml", "docker | Docker | docker compose up", Fallbacks::refused},
    });
}

TEST(StackDetector, TakesAManifestThatCannotBeReadForAbsentInBoundedTime) {
    const QByteArray comment(StackDetector::manifestLimitBytes, ' ');
    const QByteArray nested(200'000, '[');
    QElapsedTimer elapsed;
    elapsed.start();
    check({
        {"huge", package("") + comment + "; requirements.txt= " + comment + "; Makefile=dev:", makeDev},
        {"as large as it may be", "requirements.txt=" + comment + "; main.py", "app | Python | python3 main.py" + pip},
        {"deeply nested", R"(package.json={"scripts": {"dev": "x"}, "a": )" + nested + "; deno.json=" + nested, ""},
        {"folders in their place", "package.json/; go.mod/; main.py/; pyproject.toml; Makefile=dev:", makeDev},
    });

    test::TemporaryTree tree;
    tree.add(u"Makefile"_s, "dev:");
    for (const char* name : {"package.json", "requirements.txt", "main.go"}) {
        ASSERT_EQ(::mkfifo(QFile::encodeName(tree.path(QString::fromUtf8(name))).constData(), 0600), 0);
    }
    tree.add(u"go.mod"_s);
    ASSERT_TRUE(QFile::link(u"/dev/zero"_s, tree.path(u"Cargo.toml"_s)));
    ASSERT_TRUE(QFile::link(tree.path(u"gone"_s), tree.path(u"manage.py"_s)));
    EXPECT_EQ(described(StackDetector::detect(tree.path(), Fallbacks::allowed)), makeDev)
        << "pipe, device, dangling link";
    ASSERT_TRUE(QFile::link(tree.path(u"Makefile"_s), tree.path(u"compose.yml"_s)));
    EXPECT_EQ(StackDetector::detect(tree.path(), Fallbacks::refused).size(), 1) << "a link to a file is one";
    EXPECT_EQ(described(StackDetector::detect(tree.path(u"nowhere"_s), Fallbacks::allowed)), "");
    EXPECT_LT(elapsed.elapsed(), 5000);
}
