#include "OrvCore/Detectors_p.h"

using namespace Qt::StringLiterals;

namespace orv::Detectors {

namespace {

/// Which tool keeps the environment.
enum class Tool { uv, poetry, pip };

QString interpreter(const FolderReader& files, Tool tool) {
    for (const char* path : {".venv/bin/python", "venv/bin/python"}) {
        if (files.exists(path)) {
            return QString::fromUtf8(path);
        }
    }
    switch (tool) {
    case Tool::uv:
        return u"uv run python"_s;
    case Tool::poetry:
        return u"poetry run python"_s;
    case Tool::pip:
        break;
    }
    return u"python3"_s;
}

std::optional<QString> installCommand(Tool tool, bool hasRequirements, bool hasProject) {
    if (tool == Tool::uv) {
        return u"uv sync"_s;
    }
    if (tool == Tool::poetry) {
        return u"poetry install"_s;
    }
    if (!hasRequirements && !hasProject) {
        return std::nullopt;
    }
    return "python3 -m venv .venv && .venv/bin/python -m pip install "_L1 +
           (hasRequirements ? "-r requirements.txt"_L1 : "-e ."_L1);
}

QString fastApiModule(const FolderReader& files) {
    if (files.hasFile("main.py")) {
        return u"main"_s;
    }
    if (files.hasFile("app/main.py")) {
        return u"app.main"_s;
    }
    return files.hasFile("app.py") ? u"app"_s : u"main"_s;
}

QString flaskModule(const FolderReader& files) {
    return files.hasFile("app.py") || !files.hasFile("main.py") ? u"app"_s : u"main"_s;
}

/// Kind, framework and run command; the last is empty when there is nothing to run.
DetectedStack framework(const FolderReader& files, const QByteArray& dependencies, const QString& python) {
    if (files.hasFile("manage.py")) {
        return {.kind = ServiceKind::backend, .framework = u"Django"_s, .run = python + " manage.py runserver"_L1};
    }
    if (dependencies.contains("fastapi")) {
        return {
            .kind = ServiceKind::backend,
            .framework = u"FastAPI"_s,
            .run = python + " -m uvicorn "_L1 + fastApiModule(files) + ":app --reload"_L1};
    }
    if (dependencies.contains("flask")) {
        return {
            .kind = ServiceKind::backend,
            .framework = u"Flask"_s,
            .run = python + " -m flask --app "_L1 + flaskModule(files) + " run"_L1};
    }
    const bool isStreamlit = dependencies.contains("streamlit");
    const QString script = isStreamlit ? firstFile(files, {"streamlit_app.py", "app.py", "main.py"})
                                       : firstFile(files, {"main.py", "app.py", "run.py", "bot.py"});
    const QString start = isStreamlit ? python + " -m streamlit run "_L1 : python + u' ';
    return {
        .kind = isStreamlit ? ServiceKind::frontend : ServiceKind::app,
        .framework = isStreamlit ? u"Streamlit"_s : u"Python"_s,
        .run = script.isEmpty() ? QString() : start + script};
}

} // namespace

Found python(Input input) {
    FolderReader& files = input.files;
    const auto requirements = files.text("requirements.txt");
    const auto project = files.text("pyproject.toml");
    if (!requirements && !project && !files.hasFile("manage.py")) {
        return std::nullopt;
    }
    const QByteArray dependencies =
        (requirements.value_or(QByteArray()) + '\n' + project.value_or(QByteArray())).toLower();
    const bool isPoetry = files.hasFile("poetry.lock") || (project && project->contains("[tool.poetry]"));
    const Tool tool = files.hasFile("uv.lock") ? Tool::uv : isPoetry ? Tool::poetry : Tool::pip;

    DetectedStack stack = framework(files, dependencies, interpreter(files, tool));
    if (stack.run.isEmpty()) {
        return std::nullopt;
    }
    stack.install = installCommand(tool, requirements.has_value(), project.has_value());
    if (stack.install) {
        stack.installMarker = u".venv"_s;
    }
    return stack;
}

} // namespace orv::Detectors
