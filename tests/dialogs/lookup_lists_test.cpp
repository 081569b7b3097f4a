#include "dialogs/lookup_lists.h"

#include "support/files.h"
#include "support/text.h"
#include "testing/fake_platform.h"
#include "testing/temp_folder.h"

#include <gtest/gtest.h>

namespace quorvex::dialogs {
namespace {

const std::wstring kReply =
    L"<data><LookupListVersion>V7</LookupListVersion><A>AB, BA</A><T>Bath,  St Ives ,,Z\u00fcrich</T>"
    L"<O>Avon</O></data>";

class LookupListsTest : public ::testing::Test {
  protected:
    testing::FakePlatform platform;
    object::Quorvex object{platform, platform};
    testing::TempFolder folder;
    LookupLists lists{object};

    LookupListsTest() {
        object.ServerURL = L"http://s";
        lists.SetPath(folder.Text());
        Serve(kReply);
    }
    void Serve(const std::wstring& reply) {
        platform.onGetUrl = [reply](const std::wstring&) { return reply; };
    }
    void Store(const std::wstring& name, const std::string& bytes) {
        support::WriteFileBytes(folder.File(name), bytes);
    }
    std::string Stored(const std::wstring& name) {
        return support::FileExists(folder.File(name)) ? support::ReadFileBytes(folder.File(name)) : std::string();
    }
    std::wstring LastNote() {
        const auto notes = lists.TakeNotes();
        return notes.empty() ? std::wstring() : notes.back().text;
    }
};

TEST_F(LookupListsTest, FirstUseDownloadsStoresAndReads) {
    EXPECT_TRUE(lists.LoadLists());
    EXPECT_EQ(platform.urls, std::vector<std::wstring>{L"http://s/XMLService/GetLookups.aspx?datatype=1"});
    EXPECT_EQ(lists.PostcodeAreas(), L"AB,BA");
    EXPECT_EQ(lists.Towns(), L"Bath,St Ives,Z\u00fcrich"); // trimmed: a chosen value is found in the list again
    EXPECT_EQ(lists.Counties(), L"Avon");
    EXPECT_EQ(Stored(L"lookup.xml"), support::ToUtf8(kReply));
    EXPECT_EQ(Stored(L"lookupVersion.xml"),
              "<?xml version=\"1.0\" ?><data><LookupListVersion>V7</LookupListVersion></data>\r\n");
    EXPECT_EQ(lists.GetLookupListVersion(), L"V7");
    EXPECT_EQ(LastNote(), L"");
}

TEST_F(LookupListsTest, AStoredListIsReadWithoutTheService) {
    Store(L"lookup.xml", "<T>M\xf4n</T>"); // in the old code page
    EXPECT_TRUE(lists.LoadLists());
    EXPECT_TRUE(platform.urls.empty());
    EXPECT_EQ(lists.Towns(), L"M\u00f4n");
    EXPECT_EQ(lists.Counties(), L""); // no such list in the file
}

TEST_F(LookupListsTest, AReplyWithoutVersionIsNeverStored) {
    Store(L"lookup.xml", "old");
    Store(L"lookupVersion.xml", "old version");
    Serve(L"<html>service down</html>");
    EXPECT_FALSE(lists.UpdateList(false));
    EXPECT_EQ(LastNote(), L"The Lookup List was not updated properly, please try later...");
    EXPECT_EQ(Stored(L"lookup.xml"), "old");
    EXPECT_EQ(Stored(L"lookupVersion.xml"), "old version");
    EXPECT_FALSE(lists.UpdateList(true));
    EXPECT_EQ(LastNote(), L"");
}

TEST_F(LookupListsTest, WithoutServiceAndListTheUserIsToldOnce) {
    Serve(L"<html>service down</html>");
    EXPECT_FALSE(lists.LoadLists());
    EXPECT_EQ(lists.TakeNotes().size(), 1u);
    EXPECT_EQ(lists.Towns(), L"");
}

TEST_F(LookupListsTest, AnUpdateReplacesTheFilesAndServesTheAnnouncement) {
    Store(L"lookup.xml", "a much longer old list than the new one is " + std::string(5000, 'x'));
    EXPECT_TRUE(lists.CheckForAddressUpdates(L"V7"));
    EXPECT_TRUE(lists.UpdateAnnounced());
    EXPECT_TRUE(lists.UpdateList(false));
    EXPECT_EQ(LastNote(), L"The Lookup List has been updated...");
    EXPECT_EQ(Stored(L"lookup.xml"), support::ToUtf8(kReply));
    EXPECT_FALSE(lists.UpdateAnnounced());
}

TEST_F(LookupListsTest, AnyOtherVersionIsAnUpdateAndIsLookedForOnce) {
    Store(L"lookupVersion.xml", "<data><LookupListVersion>V7</LookupListVersion></data>");
    EXPECT_FALSE(lists.CheckForAddressUpdates(L"")); // no look at all
    EXPECT_TRUE(lists.CheckForAddressUpdates(L"v7"));
    EXPECT_EQ(Stored(L"lookupUpdate.xml"),
              "<?xml version=\"1.0\" ?><data><LookupListVersion>v7</LookupListVersion></data>\r\n");
    EXPECT_FALSE(lists.CheckForAddressUpdates(L"V9"));
    LookupLists same(object);
    same.SetPath(folder.Text());
    EXPECT_FALSE(same.CheckForAddressUpdates(L"V7"));
    EXPECT_FALSE(same.CheckForAddressUpdates(L"V8")); // the look is done
}

TEST_F(LookupListsTest, FileErrorsNameTheFile) {
    const std::wstring missing = folder.Text() + L"\\not there";
    lists.SetPath(missing);
    EXPECT_TRUE(lists.CheckForAddressUpdates(L"V7"));
    EXPECT_EQ(LastNote(), L"An error occured trying to create file " + missing +
                              L"\\lookupUpdate.xml which is needed for the Advanced Lookup functionality!");
    EXPECT_TRUE(lists.UpdateList(true));
    EXPECT_EQ(LastNote(), L"An error occured trying to write to file " + missing +
                              L"\\lookup.xml which is needed for the Advanced Lookup functionality!   Please allow "
                              L"access to this file.");
    // What could not be saved serves the whole session.
    LookupLists later(object);
    later.SetPath(missing);
    EXPECT_TRUE(later.LoadLists());
    EXPECT_EQ(later.Counties(), L"Avon");
    EXPECT_EQ(later.GetLookupListVersion(), L"V7");
    EXPECT_EQ(platform.urls.size(), 1u);
}

TEST_F(LookupListsTest, AFileThatAnotherProgramIsWritingIsLeftAlone) {
    Store(L"lookup.xml.new", "half a li");
    EXPECT_TRUE(lists.UpdateList(true));
    EXPECT_EQ(Stored(L"lookup.xml.new"), "half a li");
    EXPECT_EQ(Stored(L"lookup.xml"), support::ToUtf8(kReply));
    EXPECT_EQ(support::FileNames(folder.Text()).size(), 3u); // and nothing is left behind
}

TEST_F(LookupListsTest, WithoutAFolderTheListLivesInMemory) {
    LookupLists inMemory(object);
    EXPECT_TRUE(inMemory.LoadLists());
    EXPECT_EQ(inMemory.Counties(), L"Avon");
    EXPECT_TRUE(inMemory.LoadLists());
    EXPECT_EQ(platform.urls.size(), 1u);
    EXPECT_FALSE(inMemory.CheckForAddressUpdates(L"V8"));
}

} // namespace
} // namespace quorvex::dialogs
