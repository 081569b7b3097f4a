#pragma once

#include <string>

namespace quorvex::support {

// The three texts that all objects and modules of one process share.
struct ProcessState {
    std::wstring messageTitle = L"Quorvex"; // title of message boxes, a column of every log line
    std::wstring currentOperation;          // the step in progress, a column of every error-log line
    std::wstring dataPath;                  // folder of the local data files as the last host set it
};

ProcessState& Process();

} // namespace quorvex::support
