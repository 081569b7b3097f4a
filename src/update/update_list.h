#pragma once

#include "localdata/status.h"
#include "object/quorvex.h"

#include <string>
#include <vector>

namespace quorvex::update {

// What GetUpdateList returns when the service did not confirm or did not answer.
inline constexpr wchar_t kUpdateListFailed[] = L"FAILED";

// Asks the service for the packages that are newer than the dates: the text of its list, perhaps empty.
std::wstring GetUpdateList(object::Quorvex& object, const localdata::LastUpdateDates& dates);

// One package of the list.
struct ListedPackage {
    std::wstring address;
    double size = 0;     // bytes, as the service tells it
    std::wstring remark; // a third field of the service's own
};
// The list holds three fields for each package, all separated by bars, up to the first empty address. A list longer
// than any service sends is cut; its rest is listed again once these packages are applied.
std::vector<ListedPackage> ParseUpdateList(std::wstring list);
inline constexpr std::size_t kMostListedPackages = 1000;

// The file name under which a listed package is stored: the last segment of its address, without the query. Empty if
// the address is not http or https or the segment is not a package's name, since it could lead out of the data folder.
std::wstring PackageFileName(const std::wstring& address);

} // namespace quorvex::update
