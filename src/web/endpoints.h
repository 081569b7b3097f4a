#pragma once

#include "lookup/quorvex.h"

#include <string>

namespace quorvex::web {

// Complete URLs of the service. Values are appended as given, unencoded. Each first stores the default base address in
// the object when it has none. Internal keys name the computer at the place that each page expects.
std::wstring SearchForAddressUrl(lookup::Quorvex& object, const std::wstring& postcode);

struct AdvancedCriteria {
    std::wstring company;
    std::wstring house;
    std::wstring street;
    std::wstring town;
    std::wstring county;
    std::wstring postcodeArea;
};
// "&COM=1" stands before the criteria here.
std::wstring SearchForAddressAdvUrl(lookup::Quorvex& object, const AdvancedCriteria& criteria);

std::wstring SearchForThoroughfareAddressUrl(lookup::Quorvex& object, const std::wstring& postcode);
std::wstring GetAddressRecordUrl(lookup::Quorvex& object, const std::wstring& addressId);
// "&COM=1", then "&username=", then "&homepostcode=" only when a home postcode is set.
std::wstring SearchForPostZonDataUrl(lookup::Quorvex& object, const std::wstring& key);
// Without a data key.
std::wstring GetUrlforPrefuredMapUrl(lookup::Quorvex& object, const std::wstring& postcode,
                                     const std::wstring& zoomLevel);
std::wstring GetLookupsUrl(lookup::Quorvex& object);
std::wstring UpdateDataListUrl(lookup::Quorvex& object, const std::wstring& fullDate, const std::wstring& streetDate,
                               const std::wstring& postZonDate);

} // namespace quorvex::web
