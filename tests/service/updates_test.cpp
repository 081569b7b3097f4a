#include "fixture.h"
#include "support/files.h"
#include "support/text.h"
#include "testing/temp_folder.h"

#include <fstream>

namespace quorvex::service {
namespace {

class Updates : public ServiceTest {
  protected:
    // The names in the list in order, after checking that each entry is address, size and date of the file it names.
    std::vector<std::string> Names(const std::string& query) {
        std::wstring list = ElementOf("UpdateDataList.aspx?" + query, L"list");
        std::vector<std::string> names;
        while (!list.empty()) {
            const std::string address = support::ToUtf8(support::NextField(list, L"|", true));
            const std::wstring size = support::NextField(list, L"|", true);
            const std::string date = support::ToUtf8(support::NextField(list, L"|", true));
            const std::string base = Running().Address() + "/updates/";
            EXPECT_TRUE(address.starts_with(base)) << address;
            names.push_back(address.substr(base.size()));
            EXPECT_EQ(date, names.back().substr(9, 8));
            const httplib::Result file = Request("/updates/" + names.back());
            EXPECT_TRUE(file) << address;
            if (!file) continue;
            EXPECT_EQ(file->status, 200);
            EXPECT_EQ(file->get_header_value("Content-Length"), support::ToUtf8(size));
            EXPECT_EQ(file->body, support::ReadFileBytes(support::FromPath(options.data / "updates" / names.back())));
        }
        return names;
    }
};

TEST_F(Updates, NewerPackagesOfEachKindOldestFirst) {
    Begin();
    using Names = std::vector<std::string>;
    EXPECT_EQ(
        this->Names("f=20260131&t=20251231&z=20260115"),
        (Names{"UPDATE_F_20260228.zip", "UPDATE_T_20260228.zip", "UPDATE_Z_20260228.zip", "UPDATE_F_20260331.zip"}));
    EXPECT_EQ(this->Names("f=20260228&t=20260228&z=20260227"),
              (Names{"UPDATE_Z_20260228.zip", "UPDATE_F_20260331.zip"}));
    EXPECT_EQ(this->Names("f=20260331&t=20990101&z=20990101"), Names());
    EXPECT_EQ(this->Names("f=20260130&t=&z="),
              (Names{"UPDATE_F_20260131.zip", "UPDATE_F_20260228.zip", "UPDATE_F_20260331.zip"}));
    EXPECT_EQ(this->Names(""), Names());
    EXPECT_EQ(ElementOf("UpdateDataList.aspx?f=20260331&t=&z=", L"Confirm"), L"Yes");
    EXPECT_EQ(ElementOf("UpdateDataList.aspx?f=2026-01-31&t=&z=", L"Confirm"), L"");
    EXPECT_NE(ElementOf("UpdateDataList.aspx?f=2026-01-31&t=&z=", L"errormessage"), L"");
}

TEST_F(Updates, OnlyPackagesAreHandedOut) {
    quorvex::testing::TempFolder folder;
    std::filesystem::create_directories(folder.Path() / "updates" / "bad");
    std::filesystem::copy_file(options.data / "PAF_FULL.dat", folder.Path() / "PAF_FULL.dat");
    for (const char* name :
         {"secret.txt", "updates/UPDATE_F_20260501.ZIP", "updates/UPDATE_Q_20260501.zip", "updates/notes.txt",
          "updates/UPDATE_F_2026050.zip", "updates/bad/UPDATE_F_20260501.zip"}) {
        std::ofstream(folder.Path() / name) << name;
    }
    std::filesystem::create_directories(folder.Path() / "updates" / "UPDATE_F_20260502.zip");
    options.data = folder.Path();
    Begin();
    EXPECT_EQ(Names("f=20260101&t=20260101&z=20260101"), std::vector<std::string>());
    EXPECT_EQ(Body("/updates/UPDATE_F_20260501.ZIP"), "updates/UPDATE_F_20260501.ZIP");
    EXPECT_EQ(Body("/Updates/update_q_20260501.zip"), "updates/UPDATE_Q_20260501.zip");
    for (const char* target :
         {"/updates/", "/updates/notes.txt", "/updates/../secret.txt", "/updates/%2e%2e/secret.txt",
          "/updates/..%2Fsecret.txt", "/updates/..\\secret.txt", "/updates/bad/UPDATE_F_20260501.zip",
          "/updates/UPDATE_F_20260502.zip", "/updates/UPDATE_F_20260501.zip%00", "/updates//etc/passwd",
          "/updates/UPDATE_F_20260503.zip", "/PAF_FULL.dat"}) {
        const httplib::Result reply = Request(target);
        ASSERT_TRUE(reply) << target;
        EXPECT_EQ(reply->status, 404) << target;
    }
}

// A folder with one of the files answers from that one and says what is missing for the others.
TEST_F(Updates, WithoutAnUpdatesFolder) {
    quorvex::testing::TempFolder folder;
    std::filesystem::copy_file(options.data / "PAF_POSTZON.dat", folder.Path() / "PAF_POSTZON.dat");
    options.data = folder.Path();
    Begin();
    EXPECT_EQ(ElementOf("UpdateDataList.aspx?f=20260101&t=&z=", L"Confirm"), L"Yes");
    EXPECT_EQ(ElementOf("SearchForPostZonData.aspx?postcode=PE13 9AA", L"confirm"), L"Yes");
    EXPECT_NE(ElementOf("SearchForAddress.aspx?postcode=PE13 9AA", L"errormessage"), L"");
}

} // namespace
} // namespace quorvex::service
