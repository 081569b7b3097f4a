#include "object/quorvex.h"
#include "object/tag_reader.h"
#include "support/error.h"
#include "support/process_state.h"
#include "testing/fake_platform.h"

#include <gtest/gtest.h>

namespace quorvex::object {
namespace {

TEST(StoredList, AWalkTakesItsRecordsInOrder) {
    constexpr int kRecords = 20000;
    std::wstring text;
    for (int i = 0; i < kRecords; ++i) text += L"<record><line>" + std::to_wstring(i) + L"</line></record>";
    StoredList list;
    list.Assign(text);
    for (int i = 0; i < kRecords; ++i) {
        const std::wstring record = list.TakeBetween(L"<record>", L"</record>");
        ASSERT_EQ(ReadElement(record, L"line"), std::to_wstring(i));
    }
    EXPECT_EQ(list.TakeBetween(L"<record>", L"</record>"), L"");
    EXPECT_TRUE(list.Rest().empty());
}

TEST(StoredList, TakesAsTheTagReaderCuts) {
    for (const std::wstring text : {L"xx<a>value that goes on", L"<a>", L"<a>v", L"no tag", L"", L"<a>1</a><a>2"}) {
        StoredList list;
        list.Assign(text);
        std::wstring html = text;
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(list.TakeBetween(L"<a>", L"</a>"), GetBetweenTags(L"<a>", html, L"</a>", true));
            EXPECT_EQ(list.Rest(), html);
        }
    }
}

TEST(StoredList, IdentifiersOutliveTheListThatMadeThem) {
    StoredList list;
    list.Assign(L"one");
    list.SetIdentifier(0, L"PE13_1_F");
    list.SetIdentifier(101, L"last");
    list.CountHandedOut();
    list.Assign(L"two");
    EXPECT_EQ(list.HandedOut(), 0);
    EXPECT_EQ(list.Identifier(0), L"PE13_1_F");
    EXPECT_EQ(list.Identifier(101), L"last");
    EXPECT_EQ(list.Identifier(102), L"");
    EXPECT_THROW(list.SetIdentifier(102, L"x"), support::Error);
}

class Settings : public ::testing::Test {
  protected:
    ~Settings() override { support::Process() = before; }

    const support::ProcessState before = support::Process();
    quorvex::testing::FakePlatform platform;
    Quorvex object{platform, platform};
};

TEST_F(Settings, TheDataPathIsTheProcesssAndTheModeEachObjectsOwn) {
    object.LMSetDataPath(L"C:\\data\\");
    EXPECT_EQ(support::Process().dataPath, L"C:\\data\\");
    Quorvex second(platform, platform);
    EXPECT_FALSE(second.LocalMode());
    second.LMSetDataPath(L"");
    EXPECT_EQ(support::Process().dataPath, L"");
    EXPECT_TRUE(object.LocalMode());
}

// An internal key in local mode is logged under the name that the host set, in whichever order it set them.
TEST_F(Settings, TheOverrideNameIsForInternalKeysInLocalMode) {
    object.LMSetOverideComputerName(L"till 4");
    object.LMSetDataPath(L"C:\\data");
    EXPECT_EQ(platform.logUserName, L"");
    object.SetDataKey(L"i1");
    EXPECT_EQ(platform.logUserName, L"till 4");
    object.LMSetOverideComputerName(L"");
    EXPECT_EQ(platform.logUserName, L"") << "without an override the user's own name";
    object.LMSetOverideComputerName(L"till 5");
    EXPECT_EQ(platform.logUserName, L"till 5");
    object.LMSetDataPath(L"");
    EXPECT_EQ(platform.logUserName, L"");
    object.LMSetDataPath(L"C:\\data");
    object.SetDataKey(L"W1");
    EXPECT_EQ(platform.logUserName, L"");
}

} // namespace
} // namespace quorvex::object
