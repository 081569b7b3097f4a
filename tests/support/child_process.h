#pragma once

#include <cstdint>
#include <string>

namespace quorvex::testing {

// This test program running once more, in another process, with the given arguments (without blanks).
class ChildProcess {
  public:
    explicit ChildProcess(const std::wstring& arguments);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    // Waits for its end; its exit code.
    int Wait();

  private:
    std::intptr_t id_ = 0; // the system's process handle or number; 0 when it has ended
};

} // namespace quorvex::testing
