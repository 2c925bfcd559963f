#pragma once

#include "OrvCore/StackDetector.h"

#include <QJsonObject>

#include <array>
#include <initializer_list>
#include <span>

namespace orv::Detectors {

using StackDetector::EnclosingWorkspace;

/// What a detector is given.
struct Input {
    FolderReader& files;
    const std::optional<EnclosingWorkspace>& workspace;
};

/// One detector's answer; absent when the folder is none of its own.
using Found = std::optional<DetectedStack>;

[[nodiscard]] Found node(Input input);
[[nodiscard]] Found deno(Input input);
[[nodiscard]] Found python(Input input);
[[nodiscard]] Found ruby(Input input);
[[nodiscard]] Found php(Input input);
[[nodiscard]] Found go(Input input);
[[nodiscard]] Found rust(Input input);
[[nodiscard]] Found java(Input input);
[[nodiscard]] Found dotnet(Input input);
[[nodiscard]] Found elixir(Input input);
[[nodiscard]] Found swift(Input input);
[[nodiscard]] Found dart(Input input);
[[nodiscard]] Found docker(Input input);
/// What to make of a folder in which none of the above but the last found anything.
[[nodiscard]] Found fallback(Input input);

/// A word found in a manifest, and the framework it stands for.
struct NamedFramework {
    const char* needle;
    const char* framework;
};

/// The first name that is a file of the folder; empty when none is.
[[nodiscard]] QString firstFile(const FolderReader& files, std::initializer_list<const char*> names);
/// The first row whose word stands in the text.
[[nodiscard]] const NamedFramework* firstNamed(const QByteArray& text, std::span<const NamedFramework> table);
/// A JSON object; comments and commas before a closing bracket are read over. Absent for anything else.
[[nodiscard]] std::optional<QJsonObject> lenientObject(const QByteArray& text);

} // namespace orv::Detectors
