#include "Cli.h"

#include <cstdio>

int main(int argc, char** argv) {
    if (argc > 1) {
        return orv::runCommandLine(argc, argv);
    }
    std::fputs("There is no window yet. 'orvlauncher --help' shows what can be done in the terminal.\n", stderr);
    return orv::exitFailed;
}
