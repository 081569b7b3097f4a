#pragma once

#include <string>

namespace quorvex::testing {

// Writes numbered lines to the activity log of a folder, with real waiting, and then the numbers of those lines that
// used up all retries to FOLDER/WRITER.doubtful. The exit code of a process that does only this.
int WriteLog(const std::string& folder, const std::string& writer, int lines);

} // namespace quorvex::testing
