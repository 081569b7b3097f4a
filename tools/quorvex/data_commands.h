#pragma once

#include "object/quorvex.h"
#include "quorvex/program_platform.h"
#include "quorvex/report.h"

#include <optional>
#include <string>

namespace quorvex::cli {

// Columns: item, kind, date, bytes, rows, state. One row for each data file, and one for each journal, package, partial
// download or log that is in their folder. Nothing without any data file; a failure if one cannot be read.
Report Status(object::Quorvex& object);

// The integrity checker over each data file; columns: file, fault. Harmless remarks are no faults and are not listed.
// A failure if there is a fault.
Report Check(object::Quorvex& object);

struct UpdateCommand {
    bool download = false;
    std::optional<std::wstring> from; // packages are copied from here first
};
// One update run without questions; one tall row: applied, and the dates after the run. Nothing if there was no
// package.
Report UpdateData(object::Quorvex& object, ProgramPlatform& platform, const UpdateCommand& command);

} // namespace quorvex::cli
