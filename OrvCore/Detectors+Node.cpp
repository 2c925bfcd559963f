#include "OrvCore/CommandBuilder.h"
#include "OrvCore/Detectors_p.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct LockFile {
    const char* name;
    const char* packageManager;
};

constexpr std::array lockFiles{
    LockFile{"bun.lockb", "bun"}, LockFile{"bun.lock", "bun"}, LockFile{"pnpm-lock.yaml", "pnpm"},
    LockFile{"yarn.lock", "yarn"}};

struct Framework {
    const char* dependency;
    const char* name;
    ServiceKind kind;
};

constexpr std::array frameworks{
    Framework{"expo", "Expo", ServiceKind::frontend},
    Framework{"next", "Next.js", ServiceKind::frontend},
    Framework{"nuxt", "Nuxt", ServiceKind::frontend},
    Framework{"@remix-run/react", "Remix", ServiceKind::frontend},
    Framework{"astro", "Astro", ServiceKind::frontend},
    Framework{"gatsby", "Gatsby", ServiceKind::frontend},
    Framework{"react-scripts", "Create React App", ServiceKind::frontend},
    Framework{"vite", "Vite", ServiceKind::frontend},
    Framework{"@angular/core", "Angular", ServiceKind::frontend},
    Framework{"svelte", "Svelte", ServiceKind::frontend},
    Framework{"vue", "Vue", ServiceKind::frontend},
    Framework{"react", "React", ServiceKind::frontend},
    Framework{"@nestjs/core", "NestJS", ServiceKind::backend},
    Framework{"express", "Express", ServiceKind::backend},
    Framework{"fastify", "Fastify", ServiceKind::backend},
    Framework{"koa", "Koa", ServiceKind::backend},
    Framework{"@hapi/hapi", "Hapi", ServiceKind::backend},
    Framework{"hono", "Hono", ServiceKind::backend},
};

std::optional<QJsonObject> jsonObject(FolderReader& files, const char* name) {
    const auto text = files.text(name);
    if (!text) {
        return std::nullopt;
    }
    const QJsonDocument document = QJsonDocument::fromJson(*text);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

QString packageManager(const FolderReader& files) {
    for (const LockFile& lock : lockFiles) {
        if (files.hasFile(lock.name)) {
            return QString::fromUtf8(lock.packageManager);
        }
    }
    return u"npm"_s;
}

bool names(const QJsonValue& dependencies, const char* dependency) {
    return dependencies.toObject().contains(QLatin1StringView(dependency));
}

const Framework* frameworkOf(const QJsonObject& package) {
    const QJsonValue run = package["dependencies"_L1];
    const QJsonValue development = package["devDependencies"_L1];
    for (const Framework& row : frameworks) {
        if (names(run, row.dependency) || names(development, row.dependency)) {
            return &row;
        }
    }
    return nullptr;
}

/// What "npm run dev" and the like is under this manager; empty when no script is one that serves.
QString scriptCommand(const QJsonObject& scripts, const QString& manager) {
    const auto has = [&](QLatin1StringView script) { return !scripts[script].toString().isEmpty(); };
    if (has("dev"_L1)) {
        return manager + " run dev"_L1;
    }
    if (has("start"_L1)) {
        return manager == "bun"_L1 ? u"bun run start"_s : manager + " start"_L1;
    }
    return has("serve"_L1) ? manager + " run serve"_L1 : QString();
}

} // namespace

std::optional<QString> StackDetector::workspacePackageManager(FolderReader& folder) {
    bool isRoot = folder.hasFile("pnpm-workspace.yaml");
    if (const auto text = isRoot ? std::nullopt : folder.text("package.json");
        text && text->contains("\"workspaces\"")) {
        const auto package = jsonObject(folder, "package.json");
        isRoot = package && ((*package)["workspaces"_L1].isArray() || (*package)["workspaces"_L1].isObject());
    }
    return isRoot ? std::optional(packageManager(folder)) : std::nullopt;
}

Detectors::Found Detectors::node(Input input) {
    const auto package = jsonObject(input.files, "package.json");
    if (!package) {
        return std::nullopt;
    }
    const Framework* framework = frameworkOf(*package);
    const QString manager = input.workspace ? input.workspace->packageManager : packageManager(input.files);

    DetectedStack stack{
        .kind = framework != nullptr ? framework->kind : ServiceKind::frontend,
        .framework = framework != nullptr ? QString::fromUtf8(framework->name) : u"Node"_s,
        .run = scriptCommand((*package)["scripts"_L1].toObject(), manager),
        .install = manager + " install"_L1,
        .installMarker = u"node_modules"_s};
    if (stack.run.isEmpty()) {
        const QString main = (*package)["main"_L1].toString();
        if (main.isEmpty()) {
            return std::nullopt;
        }
        stack.framework = u"Node"_s;
        stack.run = "node "_L1 + CommandBuilder::word(main);
    }
    if (input.workspace) {
        stack.install = "cd "_L1 + input.workspace->up + " && "_L1 + *stack.install;
        stack.installMarker = input.workspace->up + "/node_modules"_L1;
    }
    return stack;
}

Detectors::Found Detectors::deno(Input input) {
    std::optional<QJsonObject> configuration;
    for (const char* name : {"deno.json", "deno.jsonc"}) {
        if (const auto text = configuration ? std::nullopt : input.files.text(name)) {
            configuration = lenientObject(*text);
        }
    }
    if (!configuration) {
        return std::nullopt;
    }
    DetectedStack stack{.kind = ServiceKind::app, .framework = u"Deno"_s};
    const QJsonObject tasks = (*configuration)["tasks"_L1].toObject();
    for (const QString& task : {u"dev"_s, u"start"_s}) {
        if (tasks.contains(task)) {
            stack.run = "deno task "_L1 + task;
            return stack;
        }
    }
    const QString script = firstFile(input.files, {"main.ts", "mod.ts", "server.ts"});
    if (script.isEmpty()) {
        return std::nullopt;
    }
    stack.run = "deno run -A "_L1 + script;
    return stack;
}

} // namespace orv
