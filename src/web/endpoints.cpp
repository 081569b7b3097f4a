#include "web/endpoints.h"

namespace quorvex::web {
namespace {

constexpr wchar_t kFromComponent[] = L"&COM=1";

std::wstring Page(object::Quorvex& object, const wchar_t* path) {
    return object.EnsureServerURL() + path;
}

std::wstring PageWithKey(object::Quorvex& object, const wchar_t* path) {
    return Page(object, path) + L"?datakey=" + object.DataKey();
}

std::wstring UserName(const object::Quorvex& object) {
    return object.InternalKey() ? L"&username=" + object.platform.machine.ComputerName() : std::wstring();
}

} // namespace

std::wstring SearchForAddressUrl(object::Quorvex& object, const std::wstring& postcode) {
    return PageWithKey(object, L"/xmlservice/SearchForAddress.aspx") + L"&postcode=" + postcode + kFromComponent +
           UserName(object);
}

std::wstring SearchForAddressAdvUrl(object::Quorvex& object, const AdvancedCriteria& criteria) {
    return PageWithKey(object, L"/xmlservice/SearchForAddressAdv.aspx") + kFromComponent + L"&company=" +
           criteria.company + L"&house=" + criteria.house + L"&street=" + criteria.street + L"&town=" + criteria.town +
           L"&county=" + criteria.county + L"&postcodearea=" + criteria.postcodeArea + UserName(object);
}

std::wstring SearchForThoroughfareAddressUrl(object::Quorvex& object, const std::wstring& postcode) {
    return PageWithKey(object, L"/xmlservice/SearchForThoroughfareAddress.aspx") + L"&postcode=" + postcode +
           kFromComponent + UserName(object);
}

std::wstring GetAddressRecordUrl(object::Quorvex& object, const std::wstring& addressId) {
    return PageWithKey(object, L"/xmlservice/GetAddressRecord.aspx") + L"&id=" + addressId + kFromComponent +
           UserName(object);
}

std::wstring SearchForPostZonDataUrl(object::Quorvex& object, const std::wstring& key) {
    std::wstring url = PageWithKey(object, L"/xmlservice/SearchForPostZonData.aspx") + L"&postcode=" + key +
                       kFromComponent + UserName(object);
    if (!object.HomePostcode().empty()) url += L"&homepostcode=" + object.HomePostcode();
    return url;
}

std::wstring GetUrlforPrefuredMapUrl(object::Quorvex& object, const std::wstring& postcode,
                                     const std::wstring& zoomLevel) {
    return Page(object, L"/xmlservice/GetUrlforPrefuredMap.aspx") + L"?postcode=" + postcode + L"&zoomlevel=" +
           zoomLevel + kFromComponent;
}

std::wstring GetLookupsUrl(object::Quorvex& object) {
    return Page(object, L"/XMLService/GetLookups.aspx?datatype=1");
}

std::wstring UpdateDataListUrl(object::Quorvex& object, const std::wstring& fullDate, const std::wstring& streetDate,
                               const std::wstring& postZonDate) {
    return Page(object, L"/xmlservice/UpdateDataList.aspx") + L"?f=" + fullDate + L"&t=" + streetDate + L"&z=" +
           postZonDate;
}

} // namespace quorvex::web
