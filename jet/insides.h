#pragma once

#include "jet/database.h"

namespace jet {

/// What the library's other parts, and its tests, need of an open database.
struct Insides {
    static const std::shared_ptr<Pager>& PagerOf(const Database& database);
};

} // namespace jet
