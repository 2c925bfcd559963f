#include "TermEngine/TerminalOptions.h"

namespace term {

TerminalOptions TerminalOptions::withImageCacheLimit(size_t kittyImageCacheLimitBytes, TerminalOptions rest) {
    const TerminalOptions standard;
    rest.kittyGraphics = KittyGraphicsConfiguration{.imageCacheLimitBytes = kittyImageCacheLimitBytes};
    rest.maximumOscBytes = standard.maximumOscBytes;
    rest.kittyClipboardPolicy = standard.kittyClipboardPolicy;
    rest.kittyClipboardWriteLimitBytes = standard.kittyClipboardWriteLimitBytes;
    rest.kittyClipboardMaximumRepresentations = standard.kittyClipboardMaximumRepresentations;
    rest.kittyClipboardMaximumAliases = standard.kittyClipboardMaximumAliases;
    return rest;
}

} // namespace term
