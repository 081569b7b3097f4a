#include "update/update_procedure.h"

#include "support/error.h"
#include "support/file_lock.h"
#include "support/files.h"
#include "support/process_state.h"
#include "support/text.h"
#include "testing/update_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

namespace quorvex::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using update::UpdateChoice;

constexpr wchar_t kListUrl[] = L"http://service/xmlservice/UpdateDataList.aspx?f=20240101&t=20240101&z=20240101";

class UpdateProcedure : public ::testing::Test, protected UpdateWorld {
  protected:
    UpdateProcedure() {
        AddFull(L"20240101");
        AddStreet(L"20240101");
        AddPostZon(L"20240101");
    }

    bool RunFromHost(UpdateChoice choice) {
        platform.choices.push_back(choice);
        return update::LMUpdateData(object, platform.UpdateSurroundings(), true, L"My shop");
    }
    bool RunUnattended() {
        update::UpdateRequest request;
        request.dataFolder = folder.Text();
        request.unattended = true;
        return update::Update(object, platform.UpdateSurroundings(), request, applied);
    }
    std::vector<std::wstring> Captions() const {
        std::vector<std::wstring> captions;
        for (const auto& [caption, text] : platform.windows) {
            if (captions.empty() || captions.back() != caption) captions.push_back(caption);
        }
        return captions;
    }

    int applied = -1;
};

TEST_F(UpdateProcedure, WithoutADataPathTheUserIsToldAndNothingElseHappens) {
    object.LMSetDataPath(L"");
    EXPECT_FALSE(RunFromHost(UpdateChoice::Download));
    ASSERT_EQ(platform.messages.size(), 1U);
    EXPECT_EQ(platform.messages[0].text, L"Data path must be set first");
    EXPECT_EQ(platform.messages[0].style, support::kStyleCritical);
    EXPECT_EQ(platform.messages[0].title, L"Quorvex");
    EXPECT_THAT(platform.questions, IsEmpty());
}

TEST_F(UpdateProcedure, CancelEndsTheRunWithoutATrace) {
    AddPackage(L"UPDATE_F_20240131.zip", {L"AB1 1AB"});
    EXPECT_FALSE(RunFromHost(UpdateChoice::Cancel));
    ASSERT_EQ(platform.questions.size(), 1U);
    EXPECT_EQ(platform.questions[0].caption, L"My shop:Update Postcode Address Data");
    EXPECT_EQ(platform.questions[0].dataFolder, folder.Text());
    EXPECT_TRUE(platform.questions[0].internetIsAvailable);
    EXPECT_THAT(platform.messages, IsEmpty());
    EXPECT_THAT(ActivityLines(), IsEmpty());
    EXPECT_THAT(platform.windows, IsEmpty());
    EXPECT_TRUE(HasFile(L"UPDATE_F_20240131.zip"));
}

TEST_F(UpdateProcedure, DownloadsThenAppliesAndWritesEveryStep) {
    const std::wstring f = L"http://files/UPDATE_F_20240131.zip";
    const std::wstring z = L"http://files/UPDATE_Z_20240131.zip";
    platform.replies[kListUrl] = L"<Confirm>YES</Confirm><list>" + f + L"|0|x|" + z + L"|0|y</list>";
    platform.onGetHttpFile = [this](const std::wstring&, const std::wstring& target) {
        EXPECT_EQ(support::Process().currentOperation, L"Update:Stage 4 Downloading file");
        AddPackage(support::FileNameOf(target), {L"AB1 1AB", L"ZZ9 9ZZ"});
        return true;
    };
    EXPECT_TRUE(RunFromHost(UpdateChoice::Download));
    EXPECT_THAT(platform.downloads, ElementsAre(::testing::Pair(f, folder.File(L"UPDATE_F_20240131.zip")),
                                                ::testing::Pair(z, folder.File(L"UPDATE_Z_20240131.zip"))));
    EXPECT_THAT(platform.downloadCaptions, ElementsAre(L"Downloading Update:UPDATE_F_20240131.zip 1/2",
                                                       L"Downloading Update:UPDATE_Z_20240131.zip 2/2"));
    EXPECT_THAT(ActivityLines(),
                ElementsAre(L"Requesting upgrade data|F=20240101|T=20240101|Z=20240101", //
                            L"Attempting download " + f, L"Attempting Complete " + f,    //
                            L"Attempting download " + z, L"Attempting Complete " + z,    //
                            L"Processing file UPDATE_F_20240131.zip",                    //
                            L"Data files contains 2 records",                            //
                            L"Applied:UPDATE_F_20240131.zip|31 Jan 2024|2 records",      //
                            L"Processing file UPDATE_Z_20240131.zip",                    //
                            L"Data files contains 2 records",                            //
                            L"Applied:UPDATE_Z_20240131.zip|31 Jan 2024|2 records",      //
                            L", Files applied:2 ok"));
    EXPECT_THAT(MessageTexts(), ElementsAre(L"\r\nFiles applied:2 ok \r\n"));
    EXPECT_THAT(Captions(), ElementsAre(L"Apply changes", L"Apply changes:UPDATE_F_20240131.zip 1/2",
                                        L"Apply changes:UPDATE_Z_20240131.zip 2/2"));
    EXPECT_FALSE(platform.progressShown);
    EXPECT_THAT(platform.zipStatus, ElementsAre(L"Unziping file|Unziping file|Opening UPDATE_F_20240131.zip",
                                                L"Unziping file|Unziping file|Extracting UPDATE_F_20240131.zip",
                                                L"Unziping file|Unziping file|Opening UPDATE_Z_20240131.zip",
                                                L"Unziping file|Unziping file|Extracting UPDATE_Z_20240131.zip"));
    EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240131");
    EXPECT_EQ(VersionOf(L"PAF_POSTZON.dat"), L"20240131");
    EXPECT_EQ(VersionOf(L"PAF_THOURGHFARE.dat"), L"20240101");
    for (const wchar_t* name : {L"UPDATE_F_20240131.zip", L"UPDATE_F_20240131.dat", L"UPDATE_Z_20240131.zip",
                                L"UPDATE_Z_20240131.dat", L"Update.lock"}) {
        EXPECT_FALSE(HasFile(name)) << support::ToUtf8(name);
    }
    EXPECT_THAT(ErrorLines(), IsEmpty());
    EXPECT_EQ(support::Process().currentOperation, L"Update:Stage 13");
}

TEST_F(UpdateProcedure, WhenTheServiceCannotBeReachedPresentPackagesAreStillApplied) {
    AddPackage(L"UPDATE_F_20240131.zip", {L"AB1 1AB"});
    EXPECT_FALSE(RunFromHost(UpdateChoice::Download));
    EXPECT_THAT(MessageTexts(), ElementsAre(L"Cannot contact server, please check internet connection and try again!",
                                            L"\r\nFiles applied:1 ok \r\n"));
    EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240131");
    platform.messages.clear();
    platform.replies[L"http://service/xmlservice/UpdateDataList.aspx?f=20240131&t=20240101&z=20240101"] =
        L"<Confirm>YES</Confirm><list></list>";
    EXPECT_TRUE(RunFromHost(UpdateChoice::Download)) << "nothing new is not a failure";
    EXPECT_THAT(platform.downloads, IsEmpty());
    EXPECT_THAT(MessageTexts(), ElementsAre(L"No updates to apply!"));
}

TEST_F(UpdateProcedure, AFailedDownloadOrABadNameIsLoggedAndSkipped) {
    platform.replies[kListUrl] = L"<Confirm>YES</Confirm><list>http://x/UPDATE_F_20240131.zip|0|a|"
                                 L"http://x/..\\UPDATE_F_20240229.zip|0|a|http://x/PAF_FULL.dat|0|a|"
                                 L"http://x/UPDATE_T_20240131.zip|0|a</list>";
    platform.onGetHttpFile = [this](const std::wstring& url, const std::wstring& target) {
        if (url.find(L"_F_") != std::wstring::npos) return false;
        AddPackage(support::FileNameOf(target), {L"AB1 1AA"});
        return true;
    };
    EXPECT_FALSE(RunFromHost(UpdateChoice::Download)) << "not everything came";
    EXPECT_EQ(platform.downloads.size(), 2U) << "names that are no packages' are not even asked for";
    EXPECT_THAT(ActivityLines(), Contains(L"Download Cancel or Failed http://x/UPDATE_F_20240131.zip"));
    EXPECT_THAT(ActivityLines(), Contains(L"Download Cancel or Failed http://x/..\\UPDATE_F_20240229.zip"));
    EXPECT_THAT(ActivityLines(), Contains(L"Download Cancel or Failed http://x/PAF_FULL.dat"));
    EXPECT_THAT(platform.downloadCaptions, Contains(L"Downloading Update:UPDATE_T_20240131.zip 4/4"));
    EXPECT_THAT(MessageTexts(), ElementsAre(L"\r\nFiles applied:1 ok \r\n"));
    EXPECT_EQ(VersionOf(L"PAF_THOURGHFARE.dat"), L"20240131");
}

TEST_F(UpdateProcedure, UnattendedAsksNothingAndAppliesWhatIsThere) {
    EXPECT_TRUE(RunUnattended());
    EXPECT_EQ(applied, 0);
    EXPECT_THAT(ActivityLines(), ElementsAre(L"No updates to apply!"));
    AddPackage(L"UPDATE_T_20240131.zip", {L"AB1 1AA"});
    EXPECT_TRUE(RunUnattended());
    EXPECT_EQ(applied, 1);
    EXPECT_THAT(platform.questions, IsEmpty());
    EXPECT_THAT(platform.urls, IsEmpty());
    EXPECT_THAT(platform.messages, IsEmpty()) << "nobody is there to close it";
}

TEST_F(UpdateProcedure, PackagesThatAreNotNewerOrOfNoKindArePassedOverAndGone) {
    AddStreet(L""); // never updated
    for (const wchar_t* name : {L"UPDATE_F_20240101.zip", L"UPDATE_F_20231231.zip", L"UPDATE_T_20240131.zip",
                                L"UPDATE_Q_20240131.zip", L"UPDATE_f_20240131.zip"}) {
        AddPackage(name, {L"ZZ9 9ZZ"});
    }
    EXPECT_TRUE(RunUnattended());
    EXPECT_EQ(applied, 5);
    EXPECT_EQ(ActivityLines().back(), L", Files applied:5 ok");
    EXPECT_THAT(ActivityLines(), Contains(L"Applied:UPDATE_F_20240101.zip|01 Jan 2024|0 records"));
    EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"ZZ9 9ZZ"), L"");
    EXPECT_EQ(UpdateOf(L"PAF_THOURGHFARE.dat", L"PAF_StreetAddress", L"ZZ9 9ZZ"), L"");
    EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240101");
    EXPECT_THAT(support::ListFiles(folder.Text(), L"UPDATE_", L""), IsEmpty());
}

// The layout of the names is relied on; what cannot be a date is not stamped into the data.
TEST_F(UpdateProcedure, APackageWithoutADateOrWithAnEndingInCapitalsFails) {
    for (const wchar_t* name : {L"UPDATE_F.zip", L"UPDATE_F_20240131.ZIP"}) {
        AddPackage(name, {L"AB1 1AB"});
        EXPECT_FALSE(RunUnattended());
        EXPECT_FALSE(HasFile(name)) << "no run can apply it";
        EXPECT_EQ(ActivityLines().back(), L"Failed to apply:1, please try again later");
        EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240101");
        EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"AB1 1AB"), L"old");
    }
}

// Whatever the directory's order, an older package must not put old records over newer ones.
TEST_F(UpdateProcedure, PackagesOfAKindAreAppliedOldestFirst) {
    for (const wchar_t* name :
         {L"UPDATE_F_20240430.zip", L"UPDATE_F_20240131.zip", L"UPDATE_F_20240331.zip", L"UPDATE_F_20240229.zip"}) {
        AddPackage(name, {L"AB1 1AB"});
    }
    EXPECT_TRUE(RunUnattended());
    EXPECT_EQ(applied, 4);
    EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"AB1 1AB"), L"20240430");
    EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240430");
}

TEST_F(UpdateProcedure, APackageThatFailsIsCountedAndKeptUnlessItIsDamaged) {
    AddPackage(L"UPDATE_F_20240131.zip", {L"AB1 1AB"}, [](FileData& data) { data.password = L"other"; });
    AddPackage(L"UPDATE_T_20240131.zip", {L"AB1 1AA"});
    support::WriteFileBytes(folder.File(L"UPDATE_Z_20240131.zip"), "damaged");
    EXPECT_FALSE(RunUnattended());
    EXPECT_EQ(applied, 1);
    EXPECT_THAT(ActivityLines(), Contains(L"Failed to apply UPDATE_F_20240131.zip"));
    EXPECT_THAT(ActivityLines(), Contains(L"Kept for the next run UPDATE_F_20240131.zip"));
    EXPECT_THAT(ActivityLines(), Not(Contains(L"Kept for the next run UPDATE_Z_20240131.zip")));
    EXPECT_THAT(ActivityLines(), Contains(L"Failed to apply UPDATE_Z_20240131.zip"));
    EXPECT_EQ(ActivityLines().back(), L"Failed to apply:2, please try again later");
    EXPECT_TRUE(HasFile(L"UPDATE_F_20240131.dat"));
    EXPECT_TRUE(HasFile(L"UPDATE_F_20240131.zip"));
    EXPECT_FALSE(HasFile(L"UPDATE_Z_20240131.zip"));
    ASSERT_EQ(ErrorLines().size(), 3U);
    EXPECT_EQ(ErrorLines()[2], L"Update:Stage 13|Message:|Failed to apply:2, please try again later");
    EXPECT_EQ(ErrorLines()[0], L"Update:UpdateData:Stage 3 Opening update file with ADO|Error:|-2147217843|" +
                                   folder.File(L"UPDATE_F_20240131.dat") +
                                   L": The database password is wrong'|UPDATE_F_20240131.zip|Full PAF");
    EXPECT_TRUE(ErrorLines()[1].starts_with(L"Update:Stage 10 unzip date file UPDATE_Z_20240131.zip|Error:|321|"
                                            L"The file is not a zip archive'"));
}

// An unpacked file that an earlier run left behind is not this package.
TEST_F(UpdateProcedure, ADamagedPackageNeverAppliesAnOlderUnpackedFile) {
    AddUnpacked(L"UPDATE_F_20240131.dat", {L"AB1 1AB"});
    support::WriteFileBytes(folder.File(L"UPDATE_F_20240131.zip"), "damaged");
    EXPECT_FALSE(RunUnattended());
    EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"AB1 1AB"), L"old");
}

// The data's date would move past the failed package, and its changes would never come.
TEST_F(UpdateProcedure, PackagesOfAKindWaitForTheOneThatFailed) {
    AddPackage(L"UPDATE_F_20240131.zip", {L"AB1 1AB"});
    AddPackage(L"UPDATE_F_20240229.zip", {L"AB1 1AC"});
    AddPackage(L"UPDATE_T_20240229.zip", {L"AB1 1AA"});
    bool once = true;
    databases.onCall = [&once](const std::wstring& call) {
        if (call != L"AddNew" && call != L"Update") return;
        if (std::exchange(once, false)) throw support::Error(support::kErrorDiskFull, L"The disk is full");
    };
    EXPECT_FALSE(RunUnattended());
    EXPECT_EQ(applied, 1);
    EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240101");
    EXPECT_THAT(ActivityLines(), Contains(L"Kept for the next run UPDATE_F_20240229.zip"));
    EXPECT_TRUE(RunUnattended()) << "both packages are still there";
    EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"AB1 1AB"), L"20240131");
    EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"AB1 1AC"), L"20240229");
    EXPECT_THAT(support::ListFiles(folder.Text(), L"UPDATE_", L""), IsEmpty());
}

TEST_F(UpdateProcedure, DataThatCannotBeReadFailsItsPackagesAndKeepsThem) {
    AddPackage(L"UPDATE_F_20240131.zip", {L"AB1 1AB"});
    AddPackage(L"UPDATE_Z_20240131.zip", {L"AB1 1AB"});
    support::WriteFileBytes(folder.File(L"PAF_FULL.dat"), std::string(10000, 'x'));
    support::WriteFileBytes(folder.File(L"PAF_POSTZON.dat"), "");
    EXPECT_FALSE(RunUnattended());
    EXPECT_EQ(applied, 1) << "an empty file is no data, so its package has nothing to change";
    EXPECT_TRUE(HasFile(L"UPDATE_F_20240131.zip"));
    EXPECT_FALSE(HasFile(L"UPDATE_Z_20240131.zip"));
    EXPECT_THAT(ActivityLines(), Contains(L"Failed to apply UPDATE_F_20240131.zip"));
}

TEST_F(UpdateProcedure, DatesAreReadAfterTheDialogAndAfterEveryPackage) {
    platform.onQuestion = [this] { AddFull(L"20240331"); }; // another run, while the dialog is open
    AddPackage(L"UPDATE_F_20240229.zip", {L"AB1 1AB"});
    platform.replies[L"http://service/xmlservice/UpdateDataList.aspx?f=20240331&t=20240101&z=20240101"] =
        L"<Confirm>YES</Confirm><list></list>";
    EXPECT_TRUE(RunFromHost(UpdateChoice::Download)) << "the service is asked with the new date";
    EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240331");
    EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"AB1 1AB"), L"old");
    // The same month twice, in two spellings that a case-sensitive folder tells apart: the second has nothing to
    // change.
    AddPackage(L"UPDATE_F_20240430.zip", {L"AB1 1AB"});
    AddPackage(L"UPDATE_F_20240430.Zip", {L"AB1 1AB"});
    RunUnattended();
    EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240430");
}

TEST_F(UpdateProcedure, ADownloadOfAnotherSizeThanListedFailed) {
    platform.replies[kListUrl] = L"<Confirm>YES</Confirm><list>http://x/UPDATE_F_20240131.zip|4|a|"
                                 L"http://x/UPDATE_T_20240131.zip|5|a</list>";
    platform.onGetHttpFile = [](const std::wstring&, const std::wstring& target) {
        support::WriteFileBytes(target, "1234");
        return true;
    };
    EXPECT_FALSE(RunFromHost(UpdateChoice::Download));
    EXPECT_THAT(ActivityLines(), Contains(L"Attempting Complete http://x/UPDATE_F_20240131.zip"));
    EXPECT_THAT(ActivityLines(), Contains(L"Download Cancel or Failed http://x/UPDATE_T_20240131.zip"));
    EXPECT_THAT(ActivityLines(), Not(Contains(L"Processing file UPDATE_T_20240131.zip")));
}

TEST_F(UpdateProcedure, WhatAKilledRunLeftIsSweptAndNothingElse) {
    const std::vector<std::wstring> leftovers = {L"UPDATE_F_20240131.dat", L"UPDATE_T_20240131.dat.unpacking",
                                                 L"UPDATE_T_20240131.dat.replaced", L"UPDATE_Z_20240131.zip.part",
                                                 L"UPDATE_Z_20240131.dat.journal"};
    const std::vector<std::wstring> others = {L"UPDATE_notes.dat", L"UPDATE_F_20240131.txt", L"PAF_FULL.dat"};
    for (const std::wstring& name : leftovers) support::WriteFileBytes(folder.File(name), "x");
    for (const std::wstring& name : {others[0], others[1]}) support::WriteFileBytes(folder.File(name), "x");
    {
        const auto other = support::FileLock::TryAcquire(folder.File(L"Update.lock"));
        EXPECT_FALSE(RunUnattended());
        for (const std::wstring& name : leftovers) EXPECT_TRUE(HasFile(name)) << "another run is at work";
    }
    EXPECT_TRUE(RunUnattended());
    for (const std::wstring& name : leftovers) EXPECT_FALSE(HasFile(name)) << support::ToUtf8(name);
    for (const std::wstring& name : others) EXPECT_TRUE(HasFile(name)) << support::ToUtf8(name);
}

TEST_F(UpdateProcedure, TheDialogCanShowDetailsAndSendTheLogsBeforeTheChoice) {
    support::WriteFileBytes(folder.File(L"Error1.log"), "a line\r\n");
    platform.choices = {UpdateChoice::ShowDetails, UpdateChoice::SendLogs};
    platform.mailResult = {mail::MailStatus::Shown, {}};
    EXPECT_FALSE(RunFromHost(UpdateChoice::Cancel));
    EXPECT_EQ(platform.questions.size(), 3U);
    ASSERT_EQ(platform.messages.size(), 1U);
    EXPECT_TRUE(platform.messages[0].text.starts_with(L"System:"));
    ASSERT_EQ(platform.mails.size(), 1U);
    EXPECT_EQ(platform.mails[0].attachments.size(), 1U) << "there is no activity log";
    EXPECT_TRUE(platform.mails[0].attachments[0].ends_with(L"Error1.log"));
    EXPECT_NE(platform.mails[0].body.find(L"Data Status:"), std::wstring::npos);
}

TEST_F(UpdateProcedure, LogsThatCannotBeSentAreNamedToTheUser) {
    const auto message = [this](mail::MailStatus status) {
        platform.mailResult = {status, L"offline"};
        platform.choices.assign(platform.questions.size(), UpdateChoice::Cancel);
        platform.choices.push_back(UpdateChoice::SendLogs);
        RunFromHost(UpdateChoice::Cancel);
        return platform.messages.back().text;
    };
    EXPECT_EQ(message(mail::MailStatus::NoProgram), L"There are no logs to send.");
    EXPECT_THAT(platform.mails, IsEmpty());
    support::WriteFileBytes(folder.File(L"Activity1.log"), "a line\r\n");
    const std::wstring none = message(mail::MailStatus::NoProgram);
    EXPECT_TRUE(none.starts_with(L"No mail program was found."));
    EXPECT_NE(none.find(L"Activity1.log"), std::wstring::npos);
    EXPECT_NE(message(mail::MailStatus::Failed).find(L"offline"), std::wstring::npos);
    EXPECT_EQ(message(mail::MailStatus::Sent), L"The logs were sent to support.");
}

// A host's timer can start a second run while the first one shows its progress.
TEST_F(UpdateProcedure, ASecondRunOfTheSameDataFailsCleanly) {
    AddPackage(L"UPDATE_F_20240131.zip", {L"AB1 1AB"});
    bool second = true;
    platform.onPump = [&] {
        platform.onPump = nullptr;
        const int before = applied;
        second = RunUnattended();
        applied = before;
    };
    EXPECT_TRUE(RunUnattended());
    EXPECT_FALSE(second);
    EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240131");
    ASSERT_EQ(ErrorLines().size(), 1U);
    EXPECT_NE(ErrorLines()[0].find(L"Another update of this data is running"), std::wstring::npos);
    EXPECT_TRUE(RunUnattended()) << "the lock is gone with its run";
    const auto other = support::FileLock::TryAcquire(folder.File(L"Update.lock"));
    EXPECT_FALSE(RunFromHost(UpdateChoice::ApplyFromFolder));
    EXPECT_THAT(MessageTexts(), ElementsAre(L"The update has stopped: Another update of this data is running"));
}

TEST_F(UpdateProcedure, AnUnexpectedFaultIsLoggedWithItsStageAndEndsTheRun) {
    AddPackage(L"UPDATE_F_20240131.zip", {L"AB1 1AB"});
    AddPackage(L"UPDATE_T_20240131.zip", {L"AB1 1AA"});
    databases.onCall = [](const std::wstring& call) {
        if (call == L"AddNew" || call == L"Update") throw std::bad_alloc();
    };
    EXPECT_FALSE(RunUnattended());
    EXPECT_FALSE(platform.progressShown);
    ASSERT_EQ(ErrorLines().size(), 1U);
    EXPECT_TRUE(
        ErrorLines()[0].starts_with(L"Update:UpdateData:AddOrUpdateRecordAddress:Stage 5 UPDATE AB1 1AB|Error:|"));
    EXPECT_TRUE(HasFile(L"UPDATE_T_20240131.zip")) << "the run ended there";
    EXPECT_FALSE(HasFile(L"Update.lock"));
}

TEST(FileLock, IsHeldByOneAndGoneWithItsHolder) {
    TempFolder folder;
    const std::wstring path = folder.File(L"Update.lock");
    auto first = support::FileLock::TryAcquire(path);
    ASSERT_TRUE(first);
    EXPECT_FALSE(support::FileLock::TryAcquire(path));
    first.reset();
    EXPECT_EQ(support::FileSize(path), -1);
    EXPECT_TRUE(support::FileLock::TryAcquire(path));
    // One that a killed program left behind stops nobody.
    support::WriteFileBytes(path, "");
    EXPECT_TRUE(support::FileLock::TryAcquire(path));
    EXPECT_THROW(support::FileLock::TryAcquire(folder.File(L"none\\Update.lock")), support::Error);
}

} // namespace
} // namespace quorvex::testing
