#include "OrvCore/CommandBuilder.h"
#include "OrvCore/DesktopDevice.h"
#include "OrvCore/OverrideStore.h"

namespace orv {

ServiceTarget OverrideStore::finish(ServiceTarget target, const QList<DetectedStack>& stacks) const {
    const auto generate = [&] {
        target.command =
            CommandBuilder::command(stacks, target.kind, target.directory, target.framework, desktopDevice.id);
    };
    if (target.command.isEmpty()) {
        generate();
    }
    const auto correction = override(key(target.directory, target.kind));
    if (!correction) {
        return target;
    }
    if (correction->kind && *correction->kind != target.kind) {
        target.kind = *correction->kind;
        generate();
    }
    if (correction->command) {
        target.command = *correction->command;
    }
    if (correction->port) {
        target.port = correction->port;
    }
    return target;
}

} // namespace orv
