#include "pages/pages.h"
#include "server/quorvex_object_win.h"

// Pages in the user's browser.

namespace quorvex::server {
namespace {

constexpr wchar_t kDefaultTypeOfService[] = L"Service";

} // namespace

HRESULT QuorvexObject::ShowAccountAdminPage() {
    return Guard([&] { pages::ShowAccountAdminPage(lookup_); });
}

HRESULT QuorvexObject::OpenAnAccountAndLinkToResellerForInternalUse() {
    return Guard([&] { pages::OpenAnAccountAndLinkToResellerForInternalUse(lookup_); });
}

HRESULT QuorvexObject::OpenAnAccountAndLinkToResellerForWebUse() {
    return Guard([&] { pages::OpenAnAccountAndLinkToResellerForWebUse(lookup_); });
}

HRESULT QuorvexObject::OpenAnAccountAndLinkToResellerForWebAndInternalUse() {
    return Guard([&] { pages::OpenAnAccountAndLinkToResellerForWebAndInternalUse(lookup_); });
}

HRESULT QuorvexObject::GetUrlDirectoryOfService(BSTR* PostcodeOrTown, BSTR* KeyWords, BSTR* TypeOfService,
                                                BSTR* result) {
    return Answer(result, [&] {
        const std::wstring type = TypeOfService == nullptr ? kDefaultTypeOfService : Text(TypeOfService);
        return pages::GetUrlDirectoryOfService(lookup_, Text(PostcodeOrTown), Text(KeyWords), type);
    });
}

HRESULT QuorvexObject::DisplayDirectoryOfService(BSTR* PostcodeOrTown, BSTR* KeyWords, BSTR* TypeOfService,
                                                 BSTR* result) {
    return Answer(result, [&] {
        const std::wstring type = TypeOfService == nullptr ? kDefaultTypeOfService : Text(TypeOfService);
        return pages::DisplayDirectoryOfService(lookup_, Text(PostcodeOrTown), Text(KeyWords), type);
    });
}

HRESULT QuorvexObject::GetUrlforPrefuredMapArea(BSTR* Postcode, BSTR* result) {
    return MapPage(pages::GetUrlforPrefuredMapArea, Postcode, result);
}

HRESULT QuorvexObject::GetUrlforPrefuredMapStreet(BSTR* Postcode, BSTR* result) {
    return MapPage(pages::GetUrlforPrefuredMapStreet, Postcode, result);
}

HRESULT QuorvexObject::GetUrlforPrefuredMapDistrict(BSTR* Postcode, BSTR* result) {
    return MapPage(pages::GetUrlforPrefuredMapDistrict, Postcode, result);
}

HRESULT QuorvexObject::DisplayPrefuredMapArea(BSTR* Postcode, BSTR* result) {
    return MapPage(pages::DisplayPrefuredMapArea, Postcode, result);
}

HRESULT QuorvexObject::DisplayPrefuredMapStreet(BSTR* Postcode, BSTR* result) {
    return MapPage(pages::DisplayPrefuredMapStreet, Postcode, result);
}

HRESULT QuorvexObject::DisplayPrefuredMapDistrict(BSTR* Postcode, BSTR* result) {
    return MapPage(pages::DisplayPrefuredMapDistrict, Postcode, result);
}

HRESULT QuorvexObject::MapPage(MapFunction page, BSTR* postcode, BSTR* result) {
    return Answer(result, [&] { return page(lookup_, Text(postcode)); });
}

HRESULT QuorvexObject::DisplayWebPage(BSTR* URL, VARIANT* result) {
    // The answer stays empty: there is nothing to say.
    return Answer(result, [&] { pages::DisplayWebPage(lookup_, Text(URL)); });
}

} // namespace quorvex::server
