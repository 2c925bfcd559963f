#include "TermEngine/TerminalEnvironment.h"

#include <cstdlib>

namespace term {

std::vector<std::string> getEnvironmentVariables(std::optional<std::string_view> termName, TrueColor trueColor) {
    std::vector<std::string> variables{"TERM=" + std::string(termName.value_or("xterm-256color"))};
    if (trueColor == TrueColor::yes) {
        variables.emplace_back("COLORTERM=truecolor");
    }
    variables.emplace_back("LANG=en_US.UTF-8");
    for (const char* name : {"LOGNAME", "USER", "DISPLAY", "LC_TYPE", "USER", "HOME"}) {
        if (const char* value = std::getenv(name); value != nullptr) { // NOLINT(concurrency-mt-unsafe)
            variables.push_back(std::string(name) + '=' + value);
        }
    }
    return variables;
}

} // namespace term
