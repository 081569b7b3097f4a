#include "fixture.h"

#include "object/tag_reader.h"
#include "support/files.h"
#include "support/text.h"

#include <array>
#include <cstdio>

namespace quorvex::service {

ServiceTest::ServiceTest() {
    options.data = std::filesystem::path(QUORVEX_TEST_DATA) / "sample";
    options.accounts = (folder_.Path() / "accounts.db").string();
}

void ServiceTest::Begin(bool waitForLists) {
    service_ = std::make_unique<Service>(options);
    service_->Start();
    if (waitForLists) {
        ASSERT_TRUE(service_->WaitForLists(std::chrono::seconds(20)));
    }
}

httplib::Result ServiceTest::Request(const std::string& target) {
    std::string escaped;
    for (const char c : target) {
        const auto code = static_cast<unsigned char>(c);
        std::array<char, 4> hex{};
        std::snprintf(hex.data(), hex.size(), "%%%02X", static_cast<unsigned>(code));
        escaped += code > 32 && code < 127 ? std::string(1, c) : std::string(hex.data());
    }
    httplib::Client client(service_->Address());
    client.set_url_encode(false);
    client.set_read_timeout(20);
    return client.Get(escaped);
}

std::string ServiceTest::Body(const std::string& target) {
    const httplib::Result result = Request(target);
    EXPECT_TRUE(result) << target << ": " << httplib::to_string(result.error());
    if (!result) return {};
    EXPECT_EQ(result->status, 200) << target;
    return result->body;
}

std::wstring ServiceTest::Text(const std::string& target) {
    return support::FromUtf8(Body(target));
}

std::wstring ServiceTest::AsHost(const std::wstring& url) {
    return support::ReplaceAll(Text(support::ToUtf8(url.substr(service_->Address().size()))), L"&amp;", L"&");
}

std::wstring ServiceTest::ElementOf(const std::string& page, const std::wstring& element) {
    return object::ReadElement(Text("/xmlservice/" + page), element);
}

} // namespace quorvex::service
