#pragma once

#include <atomic>
#include <string>
#include <vector>

namespace quorvex::testing {

// A count of live things that every test must leave as it found it; the test that does not fails by the name of the
// things.
class LeakCounter {
  public:
    explicit LeakCounter(const char* things);
    ~LeakCounter();
    LeakCounter(const LeakCounter&) = delete;
    LeakCounter& operator=(const LeakCounter&) = delete;

    void Add(int change) { live_ += change; }
    int Live() const { return live_; }
    const char* Things() const { return things_; }

  private:
    const char* things_;
    std::atomic<int> live_{0};
};

// Makes the test program run `main` instead of its tests when its first argument is `option`: tests that need several
// processes start themselves again. Arguments are those after the option.
struct ChildProgram {
    ChildProgram(const char* option, int (*main)(const std::vector<std::string>& arguments));
};

// The path of the running test program.
const std::string& ProgramPath();

// Runs the program's tests, each under a watchdog that ends a stuck one with its name (exit code 97,
// QUORVEX_TEST_SECONDS, 240 by default).
int RunTests(int argc, char** argv);

// The number in an environment variable; `otherwise` if it is not set.
int NumberFromEnvironment(const char* name, int otherwise);

} // namespace quorvex::testing
