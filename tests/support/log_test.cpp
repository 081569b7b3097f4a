#include "support/files.h"
#include "support/log.h"
#include "support/process_state.h"
#include "testing/fake_platform.h"
#include "testing/temp_folder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

namespace quorvex::support {
namespace {

using quorvex::testing::FakePlatform;
using quorvex::testing::TempFolder;

#ifdef _WIN32
constexpr int kRounds = 40;
#else
constexpr int kRounds = 150;
#endif

class SleepingPlatform : public FakePlatform {
  public:
    std::function<void()> onSleep;
    void SleepMilliseconds(int milliseconds) const override {
        FakePlatform::SleepMilliseconds(milliseconds);
        if (onSleep) onSleep();
    }
};

class Log : public ::testing::Test {
  protected:
    Log() : before(Process()) { Process() = {L"Quorvex", L"Update:Stage 4", folder.Text()}; }
    ~Log() override { Process() = before; }

    std::wstring File(const wchar_t* name) const { return folder.File(name); }
    std::string Read(const wchar_t* name) const { return ReadFileBytes(File(name)); }
    bool Exists(const wchar_t* name) const { return FileSize(File(name)) >= 0; }

    const ProcessState before;
    TempFolder folder;
    SleepingPlatform platform;
    const std::string start = "07/03/2026 09:05:08 Sat\tQuorvex             \tCOUNTER-1\tclerk\t";
};

TEST_F(Log, ActivityLinesHaveTenExtrasAlways) {
    LogActivity(platform, L"first\r\nsecond\r\n");
    EXPECT_EQ(Read(L"Activity1.log"), start + "first, second" + std::string(10, '\t') + "\r\n");
    LogActivity(platform, L"", {L"1", L"", L"tab\there", L"caf\u00e9", L"5", L"6", L"7", L"8", L"9", L"10", L"eleven"});
    EXPECT_EQ(Read(L"Activity1.log").substr(start.size() + 25),
              start + "\t1\t\ttab here\tcaf\xC3\xA9\t5\t6\t7\t8\t9\t10\r\n");
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(Log, TitlesFillTheirColumnAndTheHostsNameReplacesTheUsers) {
    Process().messageTitle = L"A title of 25 characters!";
    LogToFile(platform, L"Other", L"x");
    EXPECT_EQ(Read(L"Other1.log").substr(23, 22), "\tA title of 25 charac\t");
    Process().messageTitle = L"abc";
    platform.logUserName = L"till 4";
    LogToFile(platform, L"Other2", L"x");
    EXPECT_EQ(Read(L"Other21.log").substr(23, 40), "\tabc" + std::string(17, ' ') + "\tCOUNTER-1\ttill 4\tx");
}

TEST_F(Log, ErrorLinesDescribeTheErrorOrTheMessage) {
    const std::string stage = start + "Update:Stage 4\t";
    LogError(platform, Error(-2147217843, L"Not a valid password."));
    LogError(platform, Error(5, L"Invalid"), L" \r\n", {L"a", L"", L"c", L"d", L"e", L"f", L"seven"});
    LogError(platform, Error(5, L"Invalid"), L"Failed\r\nbadly", {L"a"});
    EXPECT_EQ(Read(L"Error1.log"), stage + "Error:\t-2147217843\tNot a valid password.'\r\n" + stage +
                                       "Error:\t5\tInvalid'\ta\t\tc\td\te\tf\r\n" + stage +
                                       "Message:\tFailed, badly\ta\r\n");
}

TEST_F(Log, RotatesAboveOneMillionBytes) {
    WriteFileBytes(File(L"Activity1.log"), std::string(1000000, 'x'));
    LogActivity(platform, L"a");
    EXPECT_FALSE(Exists(L"Activity2.log")) << "exactly one million stays";
    const auto grown = FileSize(File(L"Activity1.log"));
    EXPECT_GT(grown, 1000000);
    LogActivity(platform, L"b");
    EXPECT_EQ(FileSize(File(L"Activity2.log")), grown);
    EXPECT_EQ(Read(L"Activity1.log"), start + "b" + std::string(10, '\t') + "\r\n");
    EXPECT_FALSE(Exists(L"Temp.log"));

    WriteFileBytes(File(L"Error1.log"), std::string(1000001, 'x'));
    LogError(platform, Error(1, L"e"));
    EXPECT_EQ(FileSize(File(L"Error2.log")), 1000001) << "each log rotates by itself";
    EXPECT_EQ(FileSize(File(L"Activity2.log")), grown);
}

TEST_F(Log, FiveGenerationsMoveUp) {
    WriteFileBytes(File(L"Activity1.log"), std::string(1000001, '1'));
    for (const wchar_t* name : {L"Activity2.log", L"Activity3.log", L"Activity4.log", L"Activity5.log"}) {
        WriteFileBytes(File(name), "was " + std::string(1, static_cast<char>(name[8])));
    }
    WriteFileBytes(File(L"Temp.log"), "left behind");
    LogActivity(platform, L"new");
    EXPECT_EQ(Read(L"Activity5.log"), "was 4");
    EXPECT_EQ(Read(L"Activity4.log"), "was 3");
    EXPECT_EQ(Read(L"Activity3.log"), "was 2");
    EXPECT_EQ(Read(L"Activity2.log"), std::string(1000001, '1'));
    EXPECT_EQ(Read(L"Activity1.log"), start + "new" + std::string(10, '\t') + "\r\n");
    EXPECT_FALSE(Exists(L"Temp.log"));
}

TEST_F(Log, AbsentAndEmptyGenerationsDoNotMove) {
    EXPECT_TRUE(RotateLog(folder.Text(), L"A", 0)) << "nothing to rotate";
    WriteFileBytes(File(L"A1.log"), "12345");
    WriteFileBytes(File(L"A2.log"), "");
    WriteFileBytes(File(L"A3.log"), "three");
    EXPECT_TRUE(RotateLog(folder.Text(), L"A", 5));
    EXPECT_TRUE(Exists(L"A1.log"));
    EXPECT_TRUE(RotateLog(folder.Text(), L"A", 4));
    EXPECT_FALSE(Exists(L"A1.log"));
    EXPECT_EQ(Read(L"A2.log"), "12345");
    EXPECT_FALSE(Exists(L"A3.log"));
    EXPECT_EQ(Read(L"A4.log"), "three");
    EXPECT_FALSE(Exists(L"A5.log"));
}

TEST_F(Log, ABusyFileIsTriedThirtyTimesMore) {
    {
        const FileHold hold(File(L"Activity1.log"), true);
        LogActivity(platform, L"lost");
        LogActivity(platform, L"lost");
    }
    EXPECT_EQ(platform.sleeps.size(), 30U) << "what failed last time gets one attempt";
    EXPECT_EQ(Read(L"Activity1.log"), "");

    platform.sleeps.clear();
    Process().unwritableLogs = L"";
    auto hold = std::make_unique<FileHold>(File(L"Activity1.log"), true);
    platform.onSleep = [&] {
        if (platform.sleeps.size() == 30) hold.reset();
    };
    LogActivity(platform, L"kept");
    EXPECT_EQ(platform.sleeps.size(), 30U) << "the 31st attempt is the last";
    EXPECT_EQ(Read(L"Activity1.log"), start + "kept" + std::string(10, '\t') + "\r\n");
}

// Both logs rotate through one scratch file; a rotation under way must not lose its generation to the other log's. Nor
// does a log rotate while it is held.
TEST_F(Log, ARotationWaitsForTheOtherLogsAndForItsHolder) {
    for (const wchar_t* const held : {L"Temp.log", L"Activity1.log"}) {
        WriteFileBytes(File(L"Temp.log"), "Error log on its way");
        WriteFileBytes(File(L"Activity1.log"), std::string(1000001, '1'));
        auto hold = std::make_unique<FileHold>(File(held), false);
        platform.sleeps.clear();
        platform.onSleep = [&] {
            if (platform.sleeps.size() != 2) return;
            EXPECT_TRUE(Exists(L"Temp.log"));
            hold.reset();
            RenameFileQuietly(File(L"Temp.log"), File(L"Error2.log"));
        };
        LogActivity(platform, L"after");
        EXPECT_EQ(platform.sleeps.size(), 2U);
        EXPECT_EQ(Read(L"Error2.log"), "Error log on its way");
        EXPECT_EQ(FileSize(File(L"Activity2.log")), 1000001);
        EXPECT_EQ(Read(L"Activity1.log"), start + "after" + std::string(10, '\t') + "\r\n");
    }
}

// Two that find the log too large at the same moment rotate it once, not twice, and no generation is lost between them.
TEST_F(Log, OfTwoRotationsAtOnceOneHappens) {
    for (int round = 0; round < kRounds; ++round) {
        WriteFileBytes(File(L"A1.log"), "one");
        WriteFileBytes(File(L"A2.log"), "two");
        DeleteFileQuietly(File(L"A3.log"));
        std::atomic<int> ready{0};
        const auto rotate = [&] {
            ++ready;
            while (ready < 2) {
            }
            while (!RotateLog(folder.Text(), L"A", 2)) {
            }
        };
        std::thread other(rotate);
        rotate();
        other.join();
        ASSERT_EQ(Read(L"A2.log"), "one") << "round " << round;
        ASSERT_EQ(Read(L"A3.log"), "two") << "round " << round;
        ASSERT_FALSE(Exists(L"Temp.log"));
    }
}

TEST_F(Log, NoFolderIsNoFailure) {
    Process().dataPath = folder.File(L"none");
    LogActivity(platform, L"x");
    LogError(platform, Error(1, L"x"));
    EXPECT_EQ(platform.sleeps.size(), 30U) << "the second line gets one attempt";
}

} // namespace
} // namespace quorvex::support
