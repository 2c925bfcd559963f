#include "OrvCore/StackDetector.h"

#include "OrvCore/Detectors_p.h"

#include <QDir>
#include <QJsonDocument>

#include <algorithm>

namespace orv::StackDetector {

namespace {

constexpr std::array orderedDetectors{Detectors::node,   Detectors::deno,   Detectors::python, Detectors::ruby,
                                      Detectors::php,    Detectors::go,     Detectors::rust,   Detectors::java,
                                      Detectors::dotnet, Detectors::elixir, Detectors::swift,  Detectors::dart};

std::optional<EnclosingWorkspace> workspaceAround(const QString& folder) {
    const auto root = nodeWorkspaceRoot(folder);
    FolderReader files;
    if (!root || !files.open(*root)) {
        return std::nullopt;
    }
    const auto packageManager = workspacePackageManager(files);
    if (!packageManager) {
        return std::nullopt;
    }
    return EnclosingWorkspace{relativeUp(folder, *root), *packageManager};
}

} // namespace

Detection detect(FolderReader& folder, const std::optional<EnclosingWorkspace>& workspace) {
    const Detectors::Input input{folder, workspace};
    Detection detection;
    for (const auto detector : orderedDetectors) {
        if (auto found = detector(input)) {
            detection.stacks.append(*std::move(found));
        }
    }
    if (detection.stacks.isEmpty()) {
        if (auto found = Detectors::fallback(input)) {
            detection.stacks.append(*std::move(found));
            detection.beginsWithFallback = true;
        }
    }
    if (auto found = Detectors::docker(input)) {
        detection.stacks.append(*std::move(found));
    }
    return detection;
}

QList<DetectedStack> detect(const QString& folder, Fallbacks fallbacks) {
    FolderReader files;
    if (!files.open(folder)) {
        return {};
    }
    // Only a Node package asks for its workspace, and the way up reads a few files.
    const auto workspace = files.hasFile("package.json") ? workspaceAround(folder) : std::nullopt;
    return detect(files, workspace).with(fallbacks);
}

std::optional<QString> nodeWorkspaceRoot(const QString& folder) {
    QDir ancestor(QDir::cleanPath(QDir(folder).absolutePath()));
    FolderReader files;
    while (ancestor.cdUp() && !ancestor.isRoot()) {
        const bool mayBeRoot =
            ancestor.exists(QStringLiteral("package.json")) || ancestor.exists(QStringLiteral("pnpm-workspace.yaml"));
        if (mayBeRoot && files.open(ancestor.path()) && workspacePackageManager(files)) {
            return ancestor.path();
        }
    }
    return std::nullopt;
}

QString relativeUp(const QString& folder, const QString& ancestor) {
    const QString way = QDir(folder).relativeFilePath(ancestor);
    return way.endsWith(u'/') ? way.chopped(1) : way;
}

} // namespace orv::StackDetector

namespace orv::Detectors {

QString firstFile(const FolderReader& files, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (files.hasFile(name)) {
            return QString::fromUtf8(name);
        }
    }
    return {};
}

const NamedFramework* firstNamed(const QByteArray& text, std::span<const NamedFramework> table) {
    for (const NamedFramework& row : table) {
        if (text.contains(row.needle)) {
            return &row;
        }
    }
    return nullptr;
}

namespace {

/// Blanks out comments, and commas that nothing but a closing bracket follows.
QByteArray strictJson(QByteArray text) {
    qsizetype comma = -1;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '"') {
            for (++at; at < text.size() && text[at] != '"'; ++at) {
                at += text[at] == '\\' ? 1 : 0;
            }
            comma = -1;
        } else if (c == '/' && at + 1 < text.size() && (text[at + 1] == '/' || text[at + 1] == '*')) {
            const bool isLine = text[at + 1] == '/';
            const qsizetype close = text.indexOf(isLine ? "\n" : "*/", at + 2);
            const qsizetype end = close < 0 ? text.size() : close + (isLine ? 1 : 2);
            std::fill(text.begin() + at, text.begin() + end, ' ');
            at = end - 1;
        } else if (c == ',') {
            comma = at;
        } else if (c == '}' || c == ']') {
            if (comma >= 0) {
                text[comma] = ' ';
            }
            comma = -1;
        } else if (!QChar::isSpace(static_cast<unsigned char>(c))) {
            comma = -1;
        }
    }
    return text;
}

} // namespace

std::optional<QJsonObject> lenientObject(const QByteArray& text) {
    const QJsonDocument document = QJsonDocument::fromJson(strictJson(text));
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

} // namespace orv::Detectors
