orv_fuzz_target(sixel SixelFuzz.cpp)
orv_fuzz_target(graphics GraphicsFuzz.cpp)
orv_fuzz_target(input InputFuzz.cpp)
