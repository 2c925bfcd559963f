#include "UpdateMain.h"

#include <gtest/gtest.h>

#include <string_view>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (argc > 1 && std::string_view(argv[1]) == "--update") {
        for (const term::UpdateMain::Update update : term::UpdateMain::updates()) {
            update();
        }
        return 0;
    }
    return RUN_ALL_TESTS();
}
