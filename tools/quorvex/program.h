#pragma once

#include <string>
#include <vector>

namespace quorvex::cli {

// The program: reads the arguments (UTF-8, without the program's own name), runs the command, prints its report and
// returns the exit code. Nothing throws.
int RunProgram(std::vector<std::string> arguments);

} // namespace quorvex::cli
