#include "modes/mode_fixture.h"

#include "com/catalogue.h"
#include "support/text.h"

#include <cstdlib>

namespace quorvex::testing {

Properties ReadAll(_Quorvex& object, const wchar_t* prefix) {
    static const std::vector<Member> members = Catalogue(&object);
    Properties properties;
    for (const Member& member : members) {
        if (member.kind != INVOKE_PROPERTYGET || !member.name.starts_with(prefix)) continue;
        properties[member.name] = Get(&object, member.name.c_str()).result.Str();
    }
    EXPECT_GT(properties.size(), 10U);
    return properties;
}

ModeTest::ModeTest() : local_(CreateRegistered()), control_(CreateRegistered()) {
    const char* const url = std::getenv("QUORVEX_SERVICE_URL");
    EXPECT_NE(url, nullptr) << "run inside tests/with_service";
    url_ = url == nullptr ? L"http://127.0.0.1:1" : support::FromUtf8(url);
    Web().put_ServerURL(Text(url_));
    Web().SetDataKey(Text(L"key1").Ref());
    local_->put_ServerURL(Text(L"http://127.0.0.1:1"));
    UseSample(local_.get());
}

std::wstring ModeTest::Control(const std::wstring& page) {
    Text reply;
    EXPECT_EQ(control_->GetDataFromHTTPRequest(Text(url_ + L"/test/" + page).Ref(), reply.Out()), S_OK);
    std::wstring text = reply.Str();
    while (!text.empty() && text.back() == L'\n') text.pop_back();
    return text;
}

std::wstring ModeTest::LastTarget() {
    return Control(L"last");
}

} // namespace quorvex::testing
