#include "pages/pages.h"

#include "build_constants.h"
#include "object/tag_reader.h"
#include "support/files.h"
#include "web/data_request.h"
#include "web/endpoints.h"

namespace quorvex::pages {
namespace {

constexpr int kFirstShellSuccess = 32; // what the shell returns below it is a failure

std::wstring GetUrlforPrefuredMap(object::Quorvex& object, const std::wstring& postcode,
                                  const std::wstring& zoomLevel) {
    if (postcode.empty()) return {};
    const std::wstring url = web::GetUrlforPrefuredMapUrl(object, postcode, zoomLevel);
    return object::ReadBetweenTags(web::GetDataFromHTTPRequest(object, url), L"<url>", L"</url>");
}

// Opens the address found for a postcode; an address that could not be found is opened, too, so that the user is told.
std::wstring Display(object::Quorvex& object, const std::wstring& postcode, std::wstring address) {
    if (!postcode.empty()) DisplayWebPage(object, address);
    return address;
}

void OpenResellerPage(object::Quorvex& object, const wchar_t* use) {
    DisplayWebPage(object, std::wstring(kAccountUrl) + L"/A2CustomerAccount/WebAccountCreateFromReseller.aspx?r=" +
                               use + L"&id=" + std::to_wstring(object.ResellerID()));
}

} // namespace

std::wstring GetUrlforPrefuredMapArea(object::Quorvex& object, const std::wstring& postcode) {
    return GetUrlforPrefuredMap(object, postcode, L"Area");
}

std::wstring GetUrlforPrefuredMapStreet(object::Quorvex& object, const std::wstring& postcode) {
    return GetUrlforPrefuredMap(object, postcode, L"Street");
}

std::wstring GetUrlforPrefuredMapDistrict(object::Quorvex& object, const std::wstring& postcode) {
    return GetUrlforPrefuredMap(object, postcode, L"District");
}

std::wstring DisplayPrefuredMapArea(object::Quorvex& object, const std::wstring& postcode) {
    return Display(object, postcode, GetUrlforPrefuredMapArea(object, postcode));
}

std::wstring DisplayPrefuredMapStreet(object::Quorvex& object, const std::wstring& postcode) {
    return Display(object, postcode, GetUrlforPrefuredMapStreet(object, postcode));
}

std::wstring DisplayPrefuredMapDistrict(object::Quorvex& object, const std::wstring& postcode) {
    return Display(object, postcode, GetUrlforPrefuredMapDistrict(object, postcode));
}

std::wstring GetUrlDirectoryOfService(object::Quorvex& object, const std::wstring& postcode,
                                      const std::wstring& category, const std::wstring& refinement) {
    return GetUrlforPrefuredMap(object, postcode, category + L":" + refinement);
}

std::wstring DisplayDirectoryOfService(object::Quorvex& object, const std::wstring& postcode,
                                       const std::wstring& category, const std::wstring& refinement) {
    return Display(object, postcode, GetUrlDirectoryOfService(object, postcode, category, refinement));
}

void ShowAccountAdminPage(object::Quorvex& object) {
    if (!object.General_accountadminpage.empty()) {
        DisplayWebPage(object, object.General_accountadminpage);
    } else {
        DisplayWebPage(object, std::wstring(kAccountSecureUrl) + L"/WebAccountLogin.aspx");
    }
}

void OpenAnAccountAndLinkToResellerForInternalUse(object::Quorvex& object) {
    OpenResellerPage(object, L"I");
}

void OpenAnAccountAndLinkToResellerForWebUse(object::Quorvex& object) {
    OpenResellerPage(object, L"W");
}

void OpenAnAccountAndLinkToResellerForWebAndInternalUse(object::Quorvex& object) {
    OpenResellerPage(object, L"");
}

void DisplayWebPage(object::Quorvex& object, const std::wstring& address) {
    // The working directory is the whole address, not its folder: intended, some handlers expect it.
    if (object.platform.user.OpenWithShell(support::FileNameOf(address), address) < kFirstShellSuccess) {
        object.platform.user.ShowMessage(L"Unable to open " + address, support::kStyleCritical, {});
    }
}

} // namespace quorvex::pages
