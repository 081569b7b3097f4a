#include "update/update_list.h"

#include "object/tag_reader.h"
#include "support/text.h"
#include "update/package_name.h"
#include "web/data_request.h"
#include "web/endpoints.h"

namespace quorvex::update {
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
        // Services put line breaks between entries; these are not part of an address.
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
    return HasUpdateLayout(name, kPackageEnding) ? name : std::wstring();
}

} // namespace quorvex::update
