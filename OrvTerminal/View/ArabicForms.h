#pragma once

namespace orv {

/// The letter in the shape that it has between its neighbours in a cursive script, as one of Unicode's presentation
/// forms: each cell of a terminal is drawn alone, so no font can join what stands in two of them. A neighbour of 0 is
/// none. Letters without such forms stay as they are.
[[nodiscard]] char32_t joinedForm(char32_t letter, char32_t before, char32_t behind);

} // namespace orv
