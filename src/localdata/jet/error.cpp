#include "localdata/jet/error.h"

namespace quorvex::localdata::jet {

void ThrowCorrupt(const char* where, unsigned long page) {
    throw Error(ErrorCode::kCorrupt,
                "The database file is damaged: " + std::string(where) + " (page " + std::to_string(page) + ")");
}

} // namespace quorvex::localdata::jet
