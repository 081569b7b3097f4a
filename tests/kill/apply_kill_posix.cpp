#include "database/jet/jet_provider.h"
#include "localdata/status.h"
#include "storage/journal.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"
#include "testing/fake_platform.h"
#include "testing/guard.h"
#include "testing/sample_data.h"
#include "testing/temp_folder.h"
#include "update/unzip.h"
#include "update/update_applier.h"

#include <gtest/gtest.h>

#include <array>
#include <iostream>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::testing {
namespace {

constexpr wchar_t kPackage[] = L"UPDATE_F_20260331";
constexpr wchar_t kTable[] = L"PAF_FULLAddress";
constexpr int kRecords = 300;
// As the product does it, and in small groups, so that many kills meet a file that is being written.
constexpr std::array<std::size_t, 3> kTogether = {128, 7, 1};
constexpr int kKillsInARow = 4; // of the same file, before a new one is begun

// Tells another process of every record that is about to be merged.
class ReportingPlatform final : public FakePlatform {
  public:
    explicit ReportingPlatform(int pipe) : pipe_(pipe) {}
    void ShowProgress(const std::wstring&, const std::wstring& text) override {
        const char beat = text.starts_with(L"Processing record:") ? 'r' : 'o';
        if (write(pipe_, &beat, 1) != 1) _exit(3);
    }

  private:
    int pipe_;
};

class ApplyKill : public ::testing::Test {
  protected:
    ApplyKill() {
        CopySampleData(folder_.Text());
        CopyPackage(std::wstring(kPackage) + L".zip", folder_.Text());
        FakePlatform platform;
        EXPECT_TRUE(update::Unzip(platform, platform, {}, {}, folder_.File(std::wstring(kPackage) + L".zip"),
                                  folder_.Text(), {}, true));
        package_ = AddressRows(update_, kTable);
        packageKeys_ = KeysInOrder(update_, kTable, L"FT_Postcode");
        EXPECT_EQ(packageKeys_.size(), static_cast<std::size_t>(kRecords));
        original_ = AddressRows(target_, kTable);
        originalBytes_ = support::ReadFileBytes(target_);
        expected_ = original_;
        for (const auto& [key, values] : package_) expected_[key] = values;
    }

    [[noreturn]] void ApplyInChild(int pipe, std::size_t recordsTogether) {
        ReportingPlatform platform(pipe);
        database::JetProvider databases({.records = recordsTogether});
        const object::Quorvex object(platform, databases);
        int result = 0;
        try {
            update::Progress progress(platform);
            long count = 0;
            update::UpdateData(object, progress, folder_.Text(), update_, L'F', L"20260331", count);
        } catch (const support::Error& error) {
            std::cerr << support::ToUtf8(error.Description()) << std::endl;
            result = 2;
        }
        _exit(result);
    }

    // Applies in a process of its own that is ended a moment after it began the given record (0: while it opens the
    // files). True when it was ended before it was done.
    bool ApplyAndKill(int record, useconds_t moment, std::size_t recordsTogether) {
        int ends[2];
        if (pipe(ends) != 0) return false;
        const pid_t child = fork();
        if (child == 0) {
            close(ends[0]);
            ApplyInChild(ends[1], recordsTogether);
        }
        close(ends[1]);
        char beat = 0;
        for (int records = 0; records < record && read(ends[0], &beat, 1) == 1;) records += beat == 'r' ? 1 : 0;
        usleep(moment);
        kill(child, SIGKILL);
        close(ends[0]);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        if (WIFEXITED(status)) {
            EXPECT_EQ(WEXITSTATUS(status), 0) << "the applier itself failed";
        }
        return WIFSIGNALED(status);
    }

    // Whether whoever opens the file next has something to undo.
    bool IsHalfWritten() const {
        jet::Storage& storage = jet::SystemStorage();
        const jet::Path path = support::NativePath(target_);
        const auto journal = jet::Journal::PathFor(path);
        const auto file = storage.Open(path, jet::OpenMode::kReadDenyWrite);
        return jet::Journal::Examine(storage, journal, *file) == jet::Journal::Finding::kHot;
    }

    // Opens the file as the next reader would and checks every record: old or new, and the new ones are the package's
    // first ones.
    void CheckAfterKill(std::size_t& merged) {
        const SampleRows rows = AddressRows(target_, kTable);
        merged = 0;
        bool gap = false;
        for (const std::wstring& key : packageKeys_) {
            const auto row = rows.find(key);
            const bool isNew = row != rows.end() && row->second == package_.at(key);
            if (isNew) {
                EXPECT_FALSE(gap) << "a later record is there, an earlier one is not";
                ++merged;
                continue;
            }
            gap = true;
            const auto old = original_.find(key);
            const bool isOld =
                old == original_.end() ? row == rows.end() : row != rows.end() && row->second == old->second;
            EXPECT_TRUE(isOld) << support::ToUtf8(key) << " is neither old nor new";
        }
        for (const auto& [key, values] : rows) {
            if (package_.contains(key)) continue;
            const auto old = original_.find(key);
            EXPECT_TRUE(old != original_.end() && old->second == values)
                << support::ToUtf8(key) << " is not the package's";
        }
        for (const auto& [key, values] : original_)
            EXPECT_TRUE(rows.contains(key)) << support::ToUtf8(key) << " is gone";
        EXPECT_EQ(IntegrityErrors(target_), "");
        const std::wstring version = Version();
        EXPECT_TRUE(version == L"20260131" || (version == L"20260331" && merged == packageKeys_.size()))
            << support::ToUtf8(version);
    }

    std::wstring Version() {
        FakePlatform platform;
        database::JetProvider databases;
        return localdata::GetLastUpdateFULL({platform, databases}, folder_.Text());
    }

    // The next run after a kill applies the same package again, to its end.
    void FinishAndCompare() {
        ASSERT_FALSE(ApplyAndKill(kRecords * 10, 0, kTogether.front())) << "nobody ended this one";
        EXPECT_EQ(AddressRows(target_, kTable), expected_);
        EXPECT_EQ(Version(), L"20260331");
        EXPECT_EQ(IntegrityErrors(target_), "");
    }

    TempFolder folder_;
    std::wstring target_ = folder_.File(L"PAF_FULL.dat");
    std::wstring update_ = folder_.File(std::wstring(kPackage) + L".dat");
    SampleRows original_;
    SampleRows package_;
    SampleRows expected_;
    std::vector<std::wstring> packageKeys_;
    std::string originalBytes_;
};

TEST_F(ApplyKill, AtAnyInstantEveryRecordIsOldOrNew) {
    const int kills = NumberFromEnvironment("QUORVEX_KILLS", 24); // a short run
    std::mt19937 random(20260331);
    int killed = 0;
    int withinMerge = 0;
    int halfWritten = 0;
    while (killed < kills && !HasFailure()) {
        support::WriteFileBytes(target_, originalBytes_);
        for (int i = 0; i < kKillsInARow && !HasFailure(); ++i) {
            const int record = static_cast<int>(random() % (kRecords + 1));
            const std::size_t together = kTogether.at(random() % kTogether.size());
            if (!ApplyAndKill(record, static_cast<useconds_t>(random() % 1500), together)) break;
            ++killed;
            if (IsHalfWritten()) ++halfWritten;
            SCOPED_TRACE("kill " + std::to_string(killed) + " at record " + std::to_string(record));
            std::size_t merged = 0;
            CheckAfterKill(merged);
            if (merged > 0 && merged < packageKeys_.size()) ++withinMerge;
        }
        FinishAndCompare();
    }
    RecordProperty("kills", killed);
    std::cout << killed << " kills, " << withinMerge << " of them with the package partly merged, " << halfWritten
              << " with a transaction half written\n";
    EXPECT_GE(withinMerge, killed / 3) << "the kills must fall into the work, not beside it";
}

} // namespace
} // namespace quorvex::testing
