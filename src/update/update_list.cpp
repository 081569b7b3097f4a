#include "update/update_list.h"

#include "object/tag_reader.h"
#include "support/text.h"
#include "web/data_request.h"
#include "web/endpoints.h"

#include <algorithm>

namespace quorvex::update {
namespace {

constexpr std::wstring_view kPrefix = L"UPDATE_";
constexpr std::wstring_view kEnding = L".ZIP";
constexpr std::size_t kDateDigits = 8;

bool IsLetter(wchar_t c) {
    return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z');
}

bool IsPackageName(std::wstring_view name) {
    if (name.size() != kPrefix.size() + 2 + kDateDigits + kEnding.size() || !name.starts_with(kPrefix)) return false;
    if (!IsLetter(name[kPrefix.size()]) || name[kPrefix.size() + 1] != L'_') return false;
    const std::wstring_view date = name.substr(kPrefix.size() + 2, kDateDigits);
    return std::all_of(date.begin(), date.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; }) &&
           support::UpperCase(name).ends_with(kEnding);
}

} // namespace

std::wstring GetUpdateList(object::Quorvex& object, const localdata::LastUpdateDates& dates) {
    const std::wstring url = web::UpdateDataListUrl(object, dates.full, dates.street, dates.postZon);
    const std::wstring reply = web::GetDataFromHTTPRequest(object.platform, url, web::kRequestLimitSeconds);
    // This page writes its confirmation with a capital, unlike all others.
    if (object::ReadElement(reply, L"Confirm").empty()) return kUpdateListFailed;
    return object::ReadElement(reply, L"list");
}

std::vector<ListedPackage> ParseUpdateList(std::wstring list) {
    std::vector<ListedPackage> packages;
    while (packages.size() < kMostListedPackages) {
        ListedPackage package;
        // Services put line breaks between entries; they are no part of an address.
        package.address = support::Trim(support::RemoveControlChars(support::NextField(list, L"|", true)));
        if (package.address.empty()) break;
        package.size = support::LeadingNumber(support::NextField(list, L"|", true));
        package.remark = support::NextField(list, L"|", true);
        packages.push_back(std::move(package));
    }
    return packages;
}

std::wstring PackageFileName(const std::wstring& address) {
    if (!address.starts_with(L"http://") && !address.starts_with(L"https://")) return {};
    const std::wstring page = address.substr(0, address.find_first_of(L"?#"));
    const std::wstring name = page.substr(page.rfind(L'/') + 1);
    return IsPackageName(name) ? name : std::wstring();
}

} // namespace quorvex::update
