#include "jet/error.h"

namespace jet {

void ThrowCorrupt(const char* where, unsigned long page) {
    throw Error(ErrorCode::kCorrupt,
                "The database file is damaged: " + std::string(where) + " (page " + std::to_string(page) + ")");
}

} // namespace jet
