#pragma once

#include "TermEngine/TextRange.h"

namespace term {

/// Of a place that may lie outside: the index of its line within the buffer.
[[nodiscard]] int indexOf(const Buffer& buffer, std::int64_t line);
/// The index of the first line of those that soft wraps join to one.
[[nodiscard]] int firstOfWrapped(const Buffer& buffer, int index);

} // namespace term
