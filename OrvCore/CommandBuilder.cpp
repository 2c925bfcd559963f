#include "OrvCore/CommandBuilder.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv::CommandBuilder {

namespace {

QString path(const QString& folder, QLatin1StringView relative) {
    return folder + u'/' + relative;
}

QString inFolder(const QString& folder, const QString& command) {
    return "cd "_L1 + quote(folder) + " && "_L1 + command;
}

std::optional<DetectedStack> stackAmong(
    const QList<DetectedStack>& stacks, ServiceKind kind, const std::optional<QString>& framework) {
    const DetectedStack* first = nullptr;
    for (const DetectedStack& stack : stacks) {
        if (stack.kind != kind) {
            continue;
        }
        if (!framework || stack.framework == *framework) {
            return stack;
        }
        first = first != nullptr ? first : &stack;
    }
    return first != nullptr ? std::optional(*first) : std::nullopt;
}

/// What is tried where nothing is detected any more.
QString bodyWithoutStack(
    ServiceKind kind, const QString& folder, const std::optional<QString>& framework, const QString& deviceSuffix) {
    if (kind == ServiceKind::docker) {
        return u"docker compose up"_s;
    }
    if (kind == ServiceKind::flutter) {
        return "flutter run"_L1 + deviceSuffix;
    }
    if (QFile::exists(path(folder, "package.json"_L1))) {
        return u"npm run dev"_s;
    }
    QString python = u"python3"_s;
    for (const auto candidate : {"venv/bin/python"_L1, ".venv/bin/python"_L1}) {
        if (QFile::exists(path(folder, candidate))) {
            python = candidate;
            break;
        }
    }
    return python + (framework == "FastAPI"_L1 ? " -m uvicorn main:app --reload"_L1 : " manage.py runserver"_L1);
}

std::optional<DetectedStack> stackOf(const ServiceTarget& target) {
    return stack(target.kind, target.directory, target.framework);
}

} // namespace

QString quote(const QString& text) {
    QString quoted = text;
    quoted.replace(u'\'', "'\\''"_L1);
    return u'\'' + quoted + u'\'';
}

QString word(const QString& text) {
    const auto isHarmless = [](QChar c) {
        return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') ||
               QStringView(u"._:@/=+-").contains(c);
    };
    return !text.isEmpty() && std::ranges::all_of(text, isHarmless) ? text : quote(text);
}

QString command(
    ServiceKind kind, const QString& folder, const std::optional<QString>& framework,
    const std::optional<QString>& flutterDevice) {
    return inFolder(folder, body(kind, folder, framework, flutterDevice));
}

QString command(
    const QList<DetectedStack>& stacks, ServiceKind kind, const QString& folder,
    const std::optional<QString>& framework, const std::optional<QString>& flutterDevice) {
    return inFolder(folder, body(stacks, kind, folder, framework, flutterDevice));
}

QString body(
    ServiceKind kind, const QString& folder, const std::optional<QString>& framework,
    const std::optional<QString>& flutterDevice) {
    return body(StackDetector::detect(folder, Fallbacks::allowed), kind, folder, framework, flutterDevice);
}

QString body(
    const QList<DetectedStack>& stacks, ServiceKind kind, const QString& folder,
    const std::optional<QString>& framework, const std::optional<QString>& flutterDevice) {
    const QString deviceSuffix = flutterDevice ? " -d "_L1 + word(*flutterDevice) : QString();
    const auto stack = stackAmong(stacks, kind, framework);
    if (!stack) {
        return bodyWithoutStack(kind, folder, framework, deviceSuffix);
    }
    return kind == ServiceKind::flutter ? stack->run + deviceSuffix : stack->run;
}

std::optional<DetectedStack> stack(ServiceKind kind, const QString& folder, const std::optional<QString>& framework) {
    return stackAmong(StackDetector::detect(folder, Fallbacks::allowed), kind, framework);
}

QStringList installMarkers(const ServiceTarget& target) {
    const auto found = stackOf(target);
    if (!found || !found->install || !found->installMarker) {
        return {};
    }
    const QString& marker = *found->installMarker;
    return marker == ".venv"_L1 ? QStringList{marker, u"venv"_s} : QStringList{marker};
}

bool needsInstall(const ServiceTarget& target) {
    const QStringList markers = installMarkers(target);
    const auto isThere = [&](const QString& name) { return QFile::exists(target.directory + u'/' + name); };
    return !markers.isEmpty() && std::ranges::none_of(markers, isThere);
}

QString installBody(const ServiceTarget& target) {
    const auto found = stackOf(target);
    return found && found->install ? *found->install : u"npm install"_s;
}

QString install(const ServiceTarget& target) {
    return inFolder(target.directory, installBody(target));
}

InstallPlace installPlace(const QString& directory, const QString& installBody) {
    static const QRegularExpression upwards(u"^cd ((?:\\.\\./)*\\.\\.) && "_s);
    const QRegularExpressionMatch match = upwards.match(installBody);
    if (!match.hasMatch()) {
        return {directory, installBody};
    }
    return {QDir::cleanPath(directory + u'/' + match.captured(1)), installBody.sliced(match.capturedLength())};
}

} // namespace orv::CommandBuilder
