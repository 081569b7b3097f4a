#include "modes/mode_fixture.h"

#include "support/text.h"

#include <cstdlib>

namespace quorvex::testing {

#define QUORVEX_TEXT_PROPERTY(name)                                                                                    \
    { L## #name, &_Quorvex::get_##name }

const std::vector<TextProperty> kAddressProperties = {
    QUORVEX_TEXT_PROPERTY(Address_Id),           QUORVEX_TEXT_PROPERTY(Address_Organisation),
    QUORVEX_TEXT_PROPERTY(Address_Line1),        QUORVEX_TEXT_PROPERTY(Address_Line2),
    QUORVEX_TEXT_PROPERTY(Address_Line3),        QUORVEX_TEXT_PROPERTY(Address_Town),
    QUORVEX_TEXT_PROPERTY(Address_County),       QUORVEX_TEXT_PROPERTY(Address_Postcode),
    QUORVEX_TEXT_PROPERTY(Address_Country),      QUORVEX_TEXT_PROPERTY(Address_Deliverypointsuffix),
    QUORVEX_TEXT_PROPERTY(Address_NoHouseHolds), QUORVEX_TEXT_PROPERTY(Address_Smallorg),
    QUORVEX_TEXT_PROPERTY(Address_PoBox),        QUORVEX_TEXT_PROPERTY(Address_Rawpostcode),
    QUORVEX_TEXT_PROPERTY(Address_Mailsort),     QUORVEX_TEXT_PROPERTY(Address_Unique),
    QUORVEX_TEXT_PROPERTY(Address_UDPRN),        QUORVEX_TEXT_PROPERTY(Address_Spare),
};

const std::vector<TextProperty> kPostZonProperties = {
    QUORVEX_TEXT_PROPERTY(PostZon_postcode),
    QUORVEX_TEXT_PROPERTY(PostZon_IntroductionDate),
    QUORVEX_TEXT_PROPERTY(PostZon_Gridrefeast),
    QUORVEX_TEXT_PROPERTY(PostZon_Gridrefnorth),
    QUORVEX_TEXT_PROPERTY(PostZon_County),
    QUORVEX_TEXT_PROPERTY(PostZon_District),
    QUORVEX_TEXT_PROPERTY(PostZon_Ward),
    QUORVEX_TEXT_PROPERTY(PostZon_Usertype),
    QUORVEX_TEXT_PROPERTY(PostZon_Gridstatus),
    QUORVEX_TEXT_PROPERTY(PostZon_Country),
    QUORVEX_TEXT_PROPERTY(PostZon_Wardstatus),
    QUORVEX_TEXT_PROPERTY(PostZon_NHS_code),
    QUORVEX_TEXT_PROPERTY(PostZon_NHS_region),
    QUORVEX_TEXT_PROPERTY(PostZon_Latitude_wgs84),
    QUORVEX_TEXT_PROPERTY(PostZon_Longitude_wgs84),
    QUORVEX_TEXT_PROPERTY(PostZon_OSreference),
    QUORVEX_TEXT_PROPERTY(PostZon_DistanceToHomePostcode),
};

#undef QUORVEX_TEXT_PROPERTY

std::wstring Read(_Quorvex& object, const TextProperty& property) {
    Text text;
    EXPECT_EQ((object.*property.second)(text.Out()), S_OK);
    return text.Str();
}

std::vector<std::wstring> ReadAll(_Quorvex& object, const std::vector<TextProperty>& properties) {
    std::vector<std::wstring> all;
    for (const TextProperty& property : properties) {
        all.push_back(property.first + (L"=" + Read(object, property)));
    }
    return all;
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
