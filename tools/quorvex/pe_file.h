#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::cli {

// What the headers of a Windows program or DLL tell.
struct PeFile {
    bool is64Bit = false;
    bool isDll = false;
    bool hasSignature = false;
    std::vector<std::string> imports; // names of DLLs as written
    std::string version;              // "2.4.0.0" of the version resource's fixed part; empty without one
};

// Nothing if the bytes are no such file, or a damaged one. Never reads outside them.
std::optional<PeFile> ReadPeFile(const std::string& bytes);

} // namespace quorvex::cli
