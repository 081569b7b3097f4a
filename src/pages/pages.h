#pragma once

#include "lookup/quorvex.h"

#include <string>

namespace quorvex::pages {

// Addresses of maps and of the directory come from the service; an empty postcode asks nothing, opens nothing and gives
// an empty text. The Display forms open what the Get form gives and return it.
std::wstring GetUrlforPrefuredMapArea(lookup::Quorvex& object, const std::wstring& postcode);
std::wstring GetUrlforPrefuredMapStreet(lookup::Quorvex& object, const std::wstring& postcode);
std::wstring GetUrlforPrefuredMapDistrict(lookup::Quorvex& object, const std::wstring& postcode);
std::wstring DisplayPrefuredMapArea(lookup::Quorvex& object, const std::wstring& postcode);
std::wstring DisplayPrefuredMapStreet(lookup::Quorvex& object, const std::wstring& postcode);
std::wstring DisplayPrefuredMapDistrict(lookup::Quorvex& object, const std::wstring& postcode);

// The directory page for a postcode or town; category and refinement are passed through as given.
std::wstring GetUrlDirectoryOfService(lookup::Quorvex& object, const std::wstring& postcode,
                                      const std::wstring& category, const std::wstring& refinement = L"Service");
std::wstring DisplayDirectoryOfService(lookup::Quorvex& object, const std::wstring& postcode,
                                       const std::wstring& category, const std::wstring& refinement = L"Service");

// The page that the service named in its last reply, otherwise the log-in page.
void ShowAccountAdminPage(lookup::Quorvex& object);
void OpenAnAccountAndLinkToResellerForInternalUse(lookup::Quorvex& object);
void OpenAnAccountAndLinkToResellerForWebUse(lookup::Quorvex& object);
void OpenAnAccountAndLinkToResellerForWebAndInternalUse(lookup::Quorvex& object);

// Opens an address or a file in the user's default program; a failure is shown, not raised.
void DisplayWebPage(lookup::Quorvex& object, const std::wstring& address);

} // namespace quorvex::pages
