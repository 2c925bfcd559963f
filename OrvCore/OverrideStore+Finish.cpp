#include "OrvCore/CommandBuilder.h"
#include "OrvCore/OverrideStore.h"

using namespace Qt::StringLiterals;

namespace orv {

ServiceTarget OverrideStore::finish(ServiceTarget target, const QList<DetectedStack>& stacks) const {
    const auto generate = [&] {
        target.command = CommandBuilder::command(stacks, target.kind, target.directory, target.framework, u"macos"_s);
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
