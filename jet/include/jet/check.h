#pragma once

#include "jet/database.h"

namespace jet {

struct Fault {
    bool isError = true; ///< false: harmless, such as pages that nobody uses
    std::string what;
};

/// Examines a whole database: every page claimed once, every row reachable and readable, every index entry with its row
/// and every row with its entries, trees, maps and counts in order. Never throws for a damaged file: it says what it
/// found.
std::vector<Fault> CheckIntegrity(const Database& database);

/// The faults that are errors, one a line; empty for a sound file.
std::string ErrorsOf(const std::vector<Fault>& faults);

} // namespace jet
