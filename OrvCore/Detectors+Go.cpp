#include "OrvCore/CommandBuilder.h"
#include "OrvCore/Detectors_p.h"

#include <QByteArrayView>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv::Detectors {

namespace {

/// A package clause stands before any code; a longer introduction is no real file's.
constexpr qint64 clauseWithinBytes = 64 * 1024;

constexpr std::array frameworks{
    NamedFramework{"gin-gonic/gin", "Gin"}, NamedFramework{"labstack/echo", "Echo"},
    NamedFramework{"gofiber/fiber", "Fiber"}, NamedFramework{"go-chi/chi", "Chi"},
    NamedFramework{"gorilla/mux", "Gorilla"}};

/// A build constraint that keeps the file out of every ordinary build (go help buildconstraint).
bool isIgnoreConstraint(QByteArrayView comment) {
    comment = comment.trimmed();
    if (comment.startsWith("//go:build")) {
        return comment.sliced(10).trimmed() == "ignore";
    }
    const QByteArrayView body = comment.sliced(2).trimmed();
    return body.startsWith("+build") && body.sliced(6).trimmed() == "ignore";
}

/// Whether the package clause, the first thing in a Go file that is no comment, says "main".
bool declaresMain(QByteArrayView source) {
    if (source.startsWith("\xEF\xBB\xBF")) {
        source = source.sliced(3);
    }
    for (;;) {
        source = source.trimmed();
        if (source.startsWith("//")) {
            const qsizetype end = source.indexOf('\n');
            if (end < 0 || isIgnoreConstraint(source.first(end))) {
                return false;
            }
            source = source.sliced(end);
        } else if (source.startsWith("/*")) {
            const qsizetype end = source.indexOf("*/", 2);
            if (end < 0) {
                return false;
            }
            source = source.sliced(end + 2);
        } else {
            break;
        }
    }
    if (!source.startsWith("package")) {
        return false;
    }
    const QByteArrayView rest = source.sliced(7);
    const QByteArrayView name = rest.trimmed();
    const auto endsWord = [](char c) { return std::string_view(" \t\r\n;/").contains(c); };
    return !rest.isEmpty() && endsWord(rest.front()) && name.startsWith("main") &&
           (name.size() == 4 || endsWord(name[4]));
}

bool isMainPackage(FolderReader& files) {
    return std::ranges::any_of(files.namesEndingIn(".go"), [&](const std::string& name) {
        if (name.ends_with("_test.go") || name.starts_with('_') || name.starts_with('.')) {
            return false;
        }
        const auto source = files.prefix(name, clauseWithinBytes);
        return source && declaresMain(*source);
    });
}

/// The first folder under "cmd/" that holds a main package; empty when none does.
QString firstCommand(FolderReader& files) {
    FolderReader commands;
    FolderReader command;
    if (!files.exists("cmd") || !commands.openAt(files.descriptor(), "cmd")) {
        return {};
    }
    for (const std::string& name : commands.namesEndingIn("")) {
        const bool isPackageFolder = !name.starts_with('_') && !name.starts_with('.');
        if (isPackageFolder && command.openAt(commands.descriptor(), name.c_str()) && isMainPackage(command)) {
            return QString::fromStdString(name);
        }
    }
    return {};
}

} // namespace

Found go(Input input) {
    const auto module = input.files.text("go.mod");
    if (!module) {
        return std::nullopt;
    }
    DetectedStack stack{.run = u"go run ."_s};
    if (!isMainPackage(input.files)) {
        const QString command = firstCommand(input.files);
        if (command.isEmpty()) {
            return std::nullopt;
        }
        stack.run = "go run "_L1 + CommandBuilder::word("./cmd/"_L1 + command);
    }
    const NamedFramework* framework = firstNamed(*module, frameworks);
    stack.kind = framework != nullptr ? ServiceKind::backend : ServiceKind::app;
    stack.framework = framework != nullptr ? QString::fromUtf8(framework->framework) : u"Go"_s;
    return stack;
}

} // namespace orv::Detectors
