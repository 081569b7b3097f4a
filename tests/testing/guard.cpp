#include "testing/guard.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <thread>

namespace quorvex::testing {
namespace {

using Clock = std::chrono::steady_clock;

std::vector<LeakCounter*>& Counters() {
    static std::vector<LeakCounter*> counters;
    return counters;
}

using Children = std::map<std::string, int (*)(const std::vector<std::string>&)>;

Children& ChildPrograms() {
    static Children children;
    return children;
}

std::string programPath;

struct RunningTest {
    std::mutex mutex;
    Clock::time_point started = Clock::now();
    std::string name;
};

RunningTest& Running() {
    static auto& running = *new RunningTest; // never destroyed: the watchdog outlives main
    return running;
}

// Ends a stuck run with the name of the test at fault, and fails tests that leave something behind.
class Guard : public ::testing::EmptyTestEventListener {
  public:
    Guard() { std::thread(Watch).detach(); }

    void OnTestStart(const ::testing::TestInfo& test) override {
        {
            const std::lock_guard lock(Running().mutex);
            Running().name = std::string(test.test_suite_name()) + "." + test.name();
            Running().started = Clock::now();
        }
        before_.clear();
        for (const LeakCounter* counter : Counters()) before_.push_back(counter->Live());
    }

    void OnTestEnd(const ::testing::TestInfo&) override {
        for (std::size_t i = 0; i < before_.size(); ++i) {
            EXPECT_EQ(Counters()[i]->Live(), before_[i]) << "the test left " << Counters()[i]->Things() << " behind";
        }
    }

  private:
    [[noreturn]] static void Watch() {
        const std::chrono::seconds limit(NumberFromEnvironment("QUORVEX_TEST_SECONDS", 240));
        for (;;) {
            std::this_thread::sleep_for(std::chrono::seconds(1));
            const std::lock_guard lock(Running().mutex);
            if (Clock::now() - Running().started < limit) continue;
            std::fprintf(stderr, "watchdog: the test did not end: %s\n", Running().name.c_str());
            std::fflush(stderr);
            std::_Exit(97);
        }
    }

    std::vector<int> before_;
};

} // namespace

LeakCounter::LeakCounter(const char* things) : things_(things) {
    Counters().push_back(this);
}

LeakCounter::~LeakCounter() {
    std::erase(Counters(), this);
}

ChildProgram::ChildProgram(const char* option, int (*main)(const std::vector<std::string>& arguments)) {
    ChildPrograms()[option] = main;
}

const std::string& ProgramPath() {
    return programPath;
}

int NumberFromEnvironment(const char* name, int otherwise) {
    const char* const text = std::getenv(name);
    return text == nullptr ? otherwise : std::atoi(text);
}

int RunTests(int argc, char** argv) {
    programPath = argv[0];
    if (argc > 1) {
        const auto child = ChildPrograms().find(argv[1]);
        if (child != ChildPrograms().end()) return child->second(std::vector<std::string>(argv + 2, argv + argc));
    }
    ::testing::InitGoogleMock(&argc, argv);
    ::testing::UnitTest::GetInstance()->listeners().Append(new Guard); // owned by the framework
    return RUN_ALL_TESTS();
}

} // namespace quorvex::testing
