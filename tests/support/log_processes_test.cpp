#include "support/files.h"
#include "support/log.h"
#include "support/process_state.h"
#include "support/text.h"
#include "testing/fake_platform.h"
#include "testing/guard.h"
#include "testing/temp_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <map>
#include <set>
#include <thread>

namespace quorvex::testing {
namespace {

constexpr int kLines = 2500; // of some 750 bytes, so that the log rotates several times
constexpr std::size_t kRetries = 30;

class WaitingPlatform : public FakePlatform {
  public:
    void SleepMilliseconds(int milliseconds) const override {
        FakePlatform::SleepMilliseconds(milliseconds);
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }
};

// How often each line of the five generations is there, by its writer and number: "a 17".
std::map<std::string, int> LinesIn(const TempFolder& folder) {
    std::map<std::string, int> found;
    for (int generation = 1; generation <= 5; ++generation) {
        const std::wstring file = folder.File(L"Activity" + std::to_wstring(generation) + L".log");
        const std::string bytes = support::FileExists(file) ? support::ReadFileBytes(file) : std::string();
        for (std::size_t at = 0; at < bytes.size();) {
            const std::size_t end = bytes.find("\r\n", at);
            if (end == std::string::npos) {
                ADD_FAILURE() << "a line without its end in generation " << generation;
                break;
            }
            const std::string line = bytes.substr(at, end - at);
            const std::size_t message = line.find("\tclerk\t");
            const std::string text = message == std::string::npos ? "damaged" : line.substr(message + 7);
            ++found[text.substr(0, text.find('\t'))];
            at = end + 2;
        }
    }
    return found;
}

// Writes numbered lines to the activity log of a folder, with real waiting, and then those that used up all retries to
// FOLDER/WRITER.doubtful.
void WriteLog(const std::string& folder, const std::string& writer) {
    support::Process().dataPath = support::FromUtf8(folder);
    WaitingPlatform platform;
    std::string doubtful;
    for (int i = 0; i < kLines; ++i) {
        platform.sleeps.clear();
        const std::string line = writer + " " + std::to_string(i);
        support::LogActivity(platform, support::FromUtf8(line), {std::wstring(700, L'x')});
        if (platform.sleeps.size() == kRetries) doubtful += line + "\n";
    }
    support::WriteFileBytes(support::FromUtf8(folder + "\\" + writer + ".doubtful"), doubtful);
}

const ChildProgram kWriter("--write-log", [](const std::vector<std::string>& arguments) {
    WriteLog(arguments.at(0), arguments.at(1));
    return 0;
});

// Every line of either process is there once, over several rotations, but for those that the retry rule gave up.
TEST(LogProcesses, TwoWritersLoseNoLine) {
    const TempFolder folder;
    const auto start = [&](const char* writer) {
        const std::string command = "\"" + ProgramPath() + "\" --write-log " + folder.Path().string() + " " + writer;
        return std::async(std::launch::async, [command] { return std::system(command.c_str()); });
    };
    std::future<int> first = start("a");
    std::future<int> second = start("b");
    ASSERT_EQ(first.get(), 0);
    ASSERT_EQ(second.get(), 0);

    std::set<std::string> doubtful;
    for (const wchar_t* const writer : {L"a", L"b"}) {
        std::wstring rest = support::FromUtf8(support::ReadFileBytes(folder.File(std::wstring(writer) + L".doubtful")));
        while (!rest.empty()) doubtful.insert(support::ToUtf8(support::NextField(rest, L"\n", true)));
    }
    const std::map<std::string, int> found = LinesIn(folder);
    int lost = 0;
    for (const char* const writer : {"a ", "b "}) {
        for (int i = 0; i < kLines; ++i) {
            const std::string line = writer + std::to_string(i);
            const auto at = found.find(line);
            if (at != found.end()) {
                ASSERT_EQ(at->second, 1) << line;
            } else {
                ASSERT_TRUE(doubtful.contains(line)) << line << " is lost although not all retries were used";
                ++lost;
            }
        }
    }
    EXPECT_EQ(found.size(), static_cast<std::size_t>(2 * kLines - lost)) << "a line that nobody wrote";
    EXPECT_TRUE(support::FileExists(folder.File(L"Activity4.log"))) << "several rotations took place";
    RecordProperty("lines_given_up", lost);
    std::printf("lines given up after all retries: %d of %d\n", lost, 2 * kLines);
}

} // namespace
} // namespace quorvex::testing
