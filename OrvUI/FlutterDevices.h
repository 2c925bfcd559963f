#pragma once

#include "OrvUI/ModelTypes.h"

#include <atomic>
#include <chrono>

namespace orv::FlutterDevices {

/// The devices of "flutter devices --machine": a JSON array of objects; those without a text "id" and "name" are passed
/// over, anything else than an array is no device.
[[nodiscard]] QList<FlutterDevice> parse(const QByteArray& listing);

/// Runs the listing under the login shell; empty when it fails, takes longer than `limit`, or `isCancelled` is set
/// meanwhile. Blocking; any thread but the main one.
[[nodiscard]] QList<FlutterDevice> list(std::chrono::milliseconds limit, const std::atomic<bool>& isCancelled);

} // namespace orv::FlutterDevices
