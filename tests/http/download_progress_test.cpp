#include "http/download_progress.h"

#include <gtest/gtest.h>

namespace quorvex::http {
namespace {

TEST(DownloadProgressTest, MegabytesAboveAMillionBytesElseKilobytes) {
    EXPECT_EQ(DownloadProgressText(L"a.zip", 0, 1000000), L"Get file: a.zip\r\n0 Kb of 1,000 Kb 0%");
    EXPECT_EQ(DownloadProgressText(L"a.zip", 500, 1499), L"Get file: a.zip\r\n1 Kb of 1 Kb 33%");
    EXPECT_EQ(DownloadProgressText(L"a.zip", 1000001, 1000001), L"Get file: a.zip\r\n1 Mb of 1 Mb 100%");
    EXPECT_EQ(DownloadProgressText(L"a.zip", 1234567500000, 5000000000000),
              L"Get file: a.zip\r\n1,234,568 Mb of 5,000,000 Mb 25%");
}

} // namespace
} // namespace quorvex::http
