#include "OrvCore/Detectors_p.h"

#include <QByteArrayList>

using namespace Qt::StringLiterals;

namespace orv::Detectors {

namespace {

constexpr std::array rustFrameworks{
    NamedFramework{"actix-web", "Rust · Actix"}, NamedFramework{"axum", "Rust · Axum"},
    NamedFramework{"rocket", "Rust · Rocket"}, NamedFramework{"warp", "Rust · Warp"}};

bool says(FolderReader& files, const char* name, const char* word) {
    const auto text = files.text(name);
    return text && text->contains(word);
}

} // namespace

Found ruby(Input input) {
    if (!input.files.hasFile("Gemfile")) {
        return std::nullopt;
    }
    DetectedStack stack{.kind = ServiceKind::backend, .install = u"bundle install"_s};
    if (input.files.hasFile("config/application.rb")) {
        stack.framework = u"Rails"_s;
        stack.run = input.files.hasFile("bin/rails") ? u"bin/rails server"_s : u"bundle exec rails server"_s;
        return stack;
    }
    if (input.files.hasFile("config.ru")) {
        stack.framework = u"Rack"_s;
        stack.run = u"bundle exec rackup"_s;
        return stack;
    }
    return std::nullopt;
}

Found php(Input input) {
    DetectedStack stack{.kind = ServiceKind::backend, .framework = u"PHP"_s};
    if (input.files.hasFile("artisan")) {
        stack.framework = u"Laravel"_s;
        stack.run = u"php artisan serve"_s;
    } else if (input.files.hasFile("index.php")) {
        stack.run = u"php -S localhost:8000"_s;
    } else if (input.files.hasFile("public/index.php")) {
        stack.run = u"php -S localhost:8000 -t public"_s;
    } else {
        return std::nullopt;
    }
    if (input.files.hasFile("composer.json")) {
        stack.install = u"composer install"_s;
        stack.installMarker = u"vendor"_s;
    }
    return stack;
}

Found rust(Input input) {
    const auto manifest = input.files.text("Cargo.toml");
    if (!manifest) {
        return std::nullopt;
    }
    const NamedFramework* framework = firstNamed(*manifest, rustFrameworks);
    return DetectedStack{
        .kind = framework != nullptr ? ServiceKind::backend : ServiceKind::app,
        .framework = framework != nullptr ? QString::fromUtf8(framework->framework) : u"Rust"_s,
        .run = u"cargo run"_s};
}

Found java(Input input) {
    FolderReader& files = input.files;
    DetectedStack stack{.kind = ServiceKind::backend, .framework = u"Spring Boot"_s};
    if (says(files, "pom.xml", "spring-boot")) {
        stack.run = files.hasFile("mvnw") ? u"./mvnw spring-boot:run"_s : u"mvn spring-boot:run"_s;
        return stack;
    }
    if (says(files, "build.gradle", "org.springframework.boot") ||
        says(files, "build.gradle.kts", "org.springframework.boot")) {
        stack.run = files.hasFile("gradlew") ? u"./gradlew bootRun"_s : u"gradle bootRun"_s;
        return stack;
    }
    return std::nullopt;
}

Found dotnet(Input input) {
    for (const std::string& name : input.files.namesEndingIn(".csproj")) {
        if (const auto project = input.files.text(name)) {
            const bool isWeb = project->contains("Microsoft.NET.Sdk.Web");
            return DetectedStack{
                .kind = isWeb ? ServiceKind::backend : ServiceKind::app,
                .framework = isWeb ? u"ASP.NET"_s : u".NET"_s,
                .run = u"dotnet run"_s,
                .install = u"dotnet restore"_s,
                .installMarker = u"obj"_s};
        }
    }
    return std::nullopt;
}

Found elixir(Input input) {
    const auto project = input.files.text("mix.exs");
    if (!project) {
        return std::nullopt;
    }
    const bool isPhoenix = project->contains(":phoenix");
    return DetectedStack{
        .kind = isPhoenix ? ServiceKind::backend : ServiceKind::app,
        .framework = isPhoenix ? u"Phoenix"_s : u"Elixir"_s,
        .run = isPhoenix ? u"mix phx.server"_s : u"mix run --no-halt"_s,
        .install = u"mix deps.get"_s,
        .installMarker = u"deps"_s};
}

Found swift(Input input) {
    if (!says(input.files, "Package.swift", "executableTarget") &&
        !says(input.files, "Package.swift", ".executable(")) {
        return std::nullopt;
    }
    return DetectedStack{.kind = ServiceKind::app, .framework = u"Swift"_s, .run = u"swift run"_s};
}

Found dart(Input input) {
    const auto manifest = input.files.text("pubspec.yaml");
    if (!manifest) {
        return std::nullopt;
    }
    if (manifest->contains("flutter:")) {
        return DetectedStack{
            .kind = ServiceKind::flutter,
            .framework = u"Flutter"_s,
            .run = u"flutter run"_s,
            .install = u"flutter pub get"_s,
            .installMarker = u".dart_tool"_s};
    }
    if (!input.files.hasFile("lib/main.dart")) {
        return std::nullopt;
    }
    return DetectedStack{
        .kind = ServiceKind::app,
        .framework = u"Dart"_s,
        .run = u"dart run"_s,
        .install = u"dart pub get"_s,
        .installMarker = u".dart_tool"_s};
}

Found docker(Input input) {
    if (firstFile(input.files, {"docker-compose.yml", "docker-compose.yaml", "compose.yml", "compose.yaml"})
            .isEmpty()) {
        return std::nullopt;
    }
    return DetectedStack{.kind = ServiceKind::docker, .framework = u"Docker"_s, .run = u"docker compose up"_s};
}

namespace {

/// The command of a Procfile's web process.
QString webProcess(const QByteArray& procfile) {
    for (const QByteArray& line : procfile.split('\n')) {
        if (line.startsWith("web:")) {
            return QString::fromUtf8(line.sliced(4).trimmed());
        }
    }
    return {};
}

/// The names before the colon of each rule. Comments, recipes and assignments have none.
QByteArrayList makeTargets(const QByteArray& makefile) {
    QByteArrayList targets;
    for (const QByteArray& whole : makefile.split('\n')) {
        const qsizetype comment = whole.indexOf('#');
        const QByteArray line = comment < 0 ? whole : whole.first(comment);
        const qsizetype colon = line.indexOf(':');
        if (colon < 0 || line.startsWith('\t') || line.startsWith(' ')) {
            continue;
        }
        QByteArrayView after = QByteArrayView(line).sliced(colon);
        while (after.startsWith(':')) {
            after = after.sliced(1);
        }
        if (!after.startsWith('=') && !line.first(colon).contains('=')) {
            targets += line.first(colon).simplified().split(' ');
        }
    }
    return targets;
}

} // namespace

Found fallback(Input input) {
    if (const auto procfile = input.files.text("Procfile")) {
        if (const QString run = webProcess(*procfile); !run.isEmpty()) {
            return DetectedStack{.kind = ServiceKind::backend, .framework = u"Procfile"_s, .run = run};
        }
    }
    if (const auto makefile = input.files.text("Makefile")) {
        const QByteArrayList targets = makeTargets(*makefile);
        for (const char* target : {"dev", "start", "serve", "run"}) {
            if (targets.contains(target)) {
                return DetectedStack{
                    .kind = ServiceKind::app, .framework = u"Make"_s, .run = "make "_L1 + QString::fromUtf8(target)};
            }
        }
    }
    if (input.files.hasFile("index.html")) {
        return DetectedStack{
            .kind = ServiceKind::frontend, .framework = u"Static site"_s, .run = u"python3 -m http.server 8000"_s};
    }
    return std::nullopt;
}

} // namespace orv::Detectors
