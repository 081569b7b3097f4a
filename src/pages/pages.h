#pragma once

#include "object/quorvex.h"

#include <string>

namespace quorvex::pages {

// Addresses of maps and of the directory come from the service; an empty postcode asks nothing, opens nothing and gives
// an empty text. The Display forms open what the Get form gives and return it.
std::wstring GetUrlforPrefuredMapArea(object::Quorvex& object, const std::wstring& postcode);
std::wstring GetUrlforPrefuredMapStreet(object::Quorvex& object, const std::wstring& postcode);
std::wstring GetUrlforPrefuredMapDistrict(object::Quorvex& object, const std::wstring& postcode);
std::wstring DisplayPrefuredMapArea(object::Quorvex& object, const std::wstring& postcode);
std::wstring DisplayPrefuredMapStreet(object::Quorvex& object, const std::wstring& postcode);
std::wstring DisplayPrefuredMapDistrict(object::Quorvex& object, const std::wstring& postcode);

// The directory page for a postcode or town; category and refinement are passed through as given.
std::wstring GetUrlDirectoryOfService(object::Quorvex& object, const std::wstring& postcode,
                                      const std::wstring& category, const std::wstring& refinement = L"Service");
std::wstring DisplayDirectoryOfService(object::Quorvex& object, const std::wstring& postcode,
                                       const std::wstring& category, const std::wstring& refinement = L"Service");

// The page that the service named in its last reply, otherwise the log-in page.
void ShowAccountAdminPage(object::Quorvex& object);
void OpenAnAccountAndLinkToResellerForInternalUse(object::Quorvex& object);
void OpenAnAccountAndLinkToResellerForWebUse(object::Quorvex& object);
void OpenAnAccountAndLinkToResellerForWebAndInternalUse(object::Quorvex& object);

// Opens an address or a file in the user's default program; a failure is shown, not raised.
void DisplayWebPage(object::Quorvex& object, const std::wstring& address);

} // namespace quorvex::pages
