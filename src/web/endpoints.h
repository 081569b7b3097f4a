#pragma once

#include "object/quorvex.h"

#include <string>

namespace quorvex::web {

// Complete URLs of the service. Values are appended as given, unencoded. Each first stores the default base address in
// the object when it has none. Internal keys name the computer at the place that each page expects.
std::wstring SearchForAddressUrl(object::Quorvex& object, const std::wstring& postcode);

struct AdvancedCriteria {
    std::wstring company;
    std::wstring house;
    std::wstring street;
    std::wstring town;
    std::wstring county;
    std::wstring postcodeArea;
};
// "&COM=1" stands before the criteria here.
std::wstring SearchForAddressAdvUrl(object::Quorvex& object, const AdvancedCriteria& criteria);

std::wstring SearchForThoroughfareAddressUrl(object::Quorvex& object, const std::wstring& postcode);
std::wstring GetAddressRecordUrl(object::Quorvex& object, const std::wstring& addressId);
// "&COM=1", then "&username=", then "&homepostcode=" only when a home postcode is set.
std::wstring SearchForPostZonDataUrl(object::Quorvex& object, const std::wstring& key);
// Without a data key.
std::wstring GetUrlforPrefuredMapUrl(object::Quorvex& object, const std::wstring& postcode,
                                     const std::wstring& zoomLevel);
std::wstring GetLookupsUrl(object::Quorvex& object);
std::wstring UpdateDataListUrl(object::Quorvex& object, const std::wstring& fullDate, const std::wstring& streetDate,
                               const std::wstring& postZonDate);

} // namespace quorvex::web
