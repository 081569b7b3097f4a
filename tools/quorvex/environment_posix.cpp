#include "quorvex/environment.h"

#include <cstdlib>

namespace quorvex::cli {

std::optional<std::string> EnvironmentText(const char* name) {
    const char* const value = std::getenv(name);
    if (value == nullptr || *value == '\0') return std::nullopt;
    return value;
}

} // namespace quorvex::cli
