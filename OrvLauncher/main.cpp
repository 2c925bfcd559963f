#include "Cli.h"
#include "Window.h"

#include <cstdio>

int main(int argc, char** argv) {
    if (argc > 1) {
        return orv::runCommandLine(argc, argv);
    }
    if (!orv::hasDisplay()) {
        std::fputs(
            "There is no display for the window. 'orvlauncher --help' shows what can be done in the terminal.\n",
            stderr);
        return orv::exitFailed;
    }
    return orv::runWindow(argc, argv);
}
