#include "Cli.h"
#include "StartWish.h"
#include "Window.h"

#include <QFile>

#include <cstdio>

int main(int argc, char** argv) {
    QStringList words;
    for (int i = 1; i < argc; ++i) {
        words.append(QFile::decodeName(argv[i]));
    }
    const std::optional<orv::StartWish> wish = orv::StartWish::of(words);
    if (!wish) {
        return orv::runCommandLine(argc, argv);
    }
    if (!orv::hasDisplay()) {
        std::fputs(
            "There is no display for the window. 'orvlauncher --help' shows what can be done in the terminal.\n",
            stderr);
        return orv::exitFailed;
    }
    return orv::runWindow(argc, argv, *wish);
}
