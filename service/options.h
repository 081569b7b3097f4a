#pragma once

#include "service/pages.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::service {

struct Options {
    std::filesystem::path data; // folder of the data files; packages lie in its folder "updates"
    std::string host = "127.0.0.1";
    int port = 0; // 0: any free one
    std::vector<std::wstring> keys;
    std::filesystem::path keysFile;
    std::optional<std::int64_t> credits; // of each key that has none of its own
    PageSettings pages;
    bool test = false;
    bool help = false;
};

// Reads the arguments behind the program's name. Throws support::Error saying what is wrong.
Options ParseOptions(const std::vector<std::string>& arguments);
// The keys of the options and of their file. Throws support::Error.
void AddKeys(Accounts& accounts, const Options& options);

extern const char* const kUsage;

} // namespace quorvex::service
