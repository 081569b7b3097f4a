#include "kill/kill_count.h"

#include <gtest/gtest.h>

#include <charconv>
#include <string_view>

namespace {

int killCount = 24; // a short run; the long one is asked for

} // namespace

int quorvex::testing::KillCount() {
    return killCount;
}

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    constexpr std::string_view kOption = "--kills=";
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument.starts_with(kOption)) {
            std::from_chars(argument.data() + kOption.size(), argument.data() + argument.size(), killCount);
        }
    }
    return RUN_ALL_TESTS();
}
