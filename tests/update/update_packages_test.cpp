#include "database/connection_string.h"
#include "database/jet/jet_provider.h"
#include "localdata/status.h"
#include "support/file.h"
#include "support/files.h"
#include "support/process_state.h"
#include "support/text.h"
#include "testing/sample_data.h"
#include "testing/temp_folder.h"
#include "testing/truth.h"
#include "testing/update_platform.h"
#include "update/update_procedure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#endif

namespace quorvex::testing {
namespace {

// Whole runs over real packages, applied by the embedded engine and compared with what the data must then hold.
class SamplePackages : public ::testing::Test {
  protected:
    SamplePackages() {
        std::filesystem::create_directory(support::ToPath(data_));
        CopySampleData(data_);
        platform_.databases = &databases_;
        object_.LMSetDataPath(data_);
    }
    ~SamplePackages() override { support::Process() = {}; }

    bool Run() {
        update::UpdateRequest request;
        request.dataFolder = data_;
        request.unattended = true;
        return update::Update(object_, platform_.UpdateSurroundings(), request, applied_);
    }
    std::wstring InData(const std::wstring& name) const { return data_ + L"\\" + name; }
    SampleRows FullRows() const { return AddressRows(InData(L"PAF_FULL.dat"), L"PAF_FULLAddress"); }
    std::wstring Date(const wchar_t* kind) { return localdata::LMGetLastUpdateDate(object_, kind); }
    std::string ErrorLog() const {
        return support::FileExists(InData(L"Error1.log")) ? support::ReadFileBytes(InData(L"Error1.log")) : "";
    }

    TempFolder folder_;
    std::wstring data_ = folder_.File(L"data");
    database::JetProvider databases_;
    UpdatePlatform platform_;
    object::Quorvex object_{platform_, platform_};
    int applied_ = -1;
};

TEST_F(SamplePackages, OnePackageOfEachKindGivesExactlyTheUpdatedTables) {
    for (const wchar_t* name :
         {L"UPDATE_F_20260131.zip", L"UPDATE_F_20260228.zip", L"UPDATE_T_20260228.zip", L"UPDATE_Z_20260228.zip"}) {
        CopyPackage(name, data_);
    }
    EXPECT_TRUE(Run()) << ErrorLog();
    EXPECT_EQ(applied_, 4) << "the first is as old as the data and passed over";
    EXPECT_EQ(FullRows(), TruthRows(L"updated_rows_full_20260228.tsv"));
    EXPECT_EQ(AddressRows(InData(L"PAF_THOURGHFARE.dat"), L"PAF_StreetAddress"),
              TruthRows(L"updated_rows_street_20260228.tsv"));
    EXPECT_EQ(PostZonRows(InData(L"PAF_POSTZON.dat")), TruthRows(L"updated_postzon_20260228.tsv"));
    for (const wchar_t* kind : {L"F", L"T", L"Z"}) EXPECT_EQ(Date(kind), L"20260228");
    for (const wchar_t* file : {L"PAF_FULL.dat", L"PAF_THOURGHFARE.dat", L"PAF_POSTZON.dat"}) {
        EXPECT_EQ(IntegrityErrors(InData(file)), "");
    }
    EXPECT_TRUE(support::ListFiles(data_, L"UPDATE_", L"").empty());
}

// The second package has other columns' order, another spelling of its table, no key and the 2003 format.
TEST_F(SamplePackages, PackagesAreAppliedOldestFirst) {
    CopyPackage(L"UPDATE_F_20260331.zip", data_);
    CopyPackage(L"UPDATE_F_20260228.zip", data_);
    EXPECT_TRUE(Run()) << ErrorLog();
    EXPECT_EQ(FullRows(), TruthRows(L"updated_rows_full_20260331.tsv"));
    EXPECT_EQ(Date(L"F"), L"20260331");
    EXPECT_EQ(IntegrityErrors(InData(L"PAF_FULL.dat")), "");
}

// Each bad package on its own: it fails (or is passed over), the data stays byte for byte as it was, and nothing
// appears outside the data folder.
TEST_F(SamplePackages, NoBadPackageChangesAnything) {
    const std::string before = support::ReadFileBytes(InData(L"PAF_FULL.dat"));
    const std::wstring bad = DataFolder(L"sample\\updates\\bad");
    const std::vector<std::wstring> names = support::ListFiles(bad, L"UPDATE_", L".zip");
    EXPECT_EQ(names.size(), 17U);
    for (const std::wstring& name : names) {
        const std::string shown = support::ToUtf8(name);
        CopyPackage(L"bad\\" + name, data_);
        const bool unknownKind = name.find(L"_Q_") != std::wstring::npos;
        EXPECT_EQ(Run(), unknownKind) << shown << " " << ErrorLog();
        EXPECT_EQ(applied_, unknownKind ? 1 : 0) << shown;
        if (unknownKind) {
            EXPECT_FALSE(support::FileExists(InData(name))) << shown;
        }
        EXPECT_EQ(ErrorLog().empty(), unknownKind) << shown << " has its reason in the error log";
        EXPECT_TRUE(support::ReadFileBytes(InData(L"PAF_FULL.dat")) == before) << shown;
        for (const std::wstring& left : support::ListFiles(data_, L"UPDATE_", L"")) {
            support::DeleteFileQuietly(InData(left));
        }
        support::DeleteFileQuietly(InData(L"Error1.log"));
        support::DeleteFileQuietly(InData(L"Activity1.log"));
        EXPECT_TRUE(support::ListFiles(folder_.Text(), L"", L"").empty()) << shown << " wrote outside the data folder";
        EXPECT_EQ(support::ListFiles(data_, L"", L"").size(), 4U) << shown << " left something behind";
    }
    EXPECT_EQ(Date(L"F"), L"20260131");
}

#ifdef _WIN32
TEST_F(SamplePackages, APackageThatIsStillBeingCopiedWaitsForTheNextRun) {
    CopyPackage(L"UPDATE_F_20260228.zip", data_);
    const std::wstring package = InData(L"UPDATE_F_20260228.zip");
    const std::string bytes = support::ReadFileBytes(package);
    {
        support::File copy(package, support::File::Mode::kCreate);
        copy.Write(std::string_view(bytes).substr(0, bytes.size() / 2));
        EXPECT_FALSE(Run());
        copy.Write(std::string_view(bytes).substr(bytes.size() / 2));
    }
    EXPECT_NE(ErrorLog().find("Cannot open file"), std::string::npos) << ErrorLog();
    EXPECT_TRUE(Run());
    EXPECT_EQ(FullRows(), TruthRows(L"updated_rows_full_20260228.tsv"));
}
#else
// No file may grow beyond a size, as on a full disk, whichever write that meets.
TEST_F(SamplePackages, AFullDiskLosesNothing) {
    std::signal(SIGXFSZ, SIG_IGN);
    const std::string before = support::ReadFileBytes(InData(L"PAF_FULL.dat"));
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
    int failures = 0;
    for (rlim_t size = 5000; size < before.size() + 100000; size += 5000) {
        support::WriteFileBytes(InData(L"PAF_FULL.dat"), before);
        CopyPackage(L"UPDATE_F_20260331.zip", data_);
        const rlimit limit{size, usual.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        const bool applied = Run();
        setrlimit(RLIMIT_FSIZE, &usual);
        EXPECT_EQ(IntegrityErrors(InData(L"PAF_FULL.dat")), "") << size;
        EXPECT_EQ(Date(L"F"), applied ? L"20260331" : L"20260131") << size;
        if (!applied) {
            ++failures;
            EXPECT_NE(ErrorLog().find("Failed to apply:1"), std::string::npos) << size;
            EXPECT_TRUE(Run()) << size << ": the package is still there";
        }
        EXPECT_EQ(Date(L"F"), L"20260331") << size;
        if (HasFailure()) return;
        for (const wchar_t* log : {L"Error1.log", L"Activity1.log"}) support::DeleteFileQuietly(InData(log));
    }
    EXPECT_GT(failures, 10);
}
#endif

TEST_F(SamplePackages, DataThatIsBeingReadFailsThePackageAndIsUpdatedLater) {
    CopyPackage(L"UPDATE_F_20260228.zip", data_);
    {
        const auto reading = databases_.CreateConnection();
        reading->SetMode(database::kModeShareDenyWrite);
        reading->Open(database::ConnectionString(InData(L"PAF_FULL.dat")), database::kDatabaseUser, {});
        EXPECT_FALSE(Run());
        EXPECT_NE(ErrorLog().find("Stage 5"), std::string::npos) << ErrorLog();
        reading->Close();
    }
    EXPECT_EQ(Date(L"F"), L"20260131");
    EXPECT_TRUE(Run()) << "the package is still there";
    EXPECT_EQ(FullRows(), TruthRows(L"updated_rows_full_20260228.tsv"));
}

} // namespace
} // namespace quorvex::testing
