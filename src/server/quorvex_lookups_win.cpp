#include "lookups/address_list.h"
#include "lookups/address_record.h"
#include "lookups/distance.h"
#include "lookups/nearest.h"
#include "lookups/postzon.h"
#include "server/quorvex_object_win.h"

// The non-interactive lookups.

namespace quorvex::server {

HRESULT QuorvexObject::GetThoroughfareAddressRecord(BSTR* Postcode, VARIANT_BOOL* result) {
    return Answer(result, [&] { return lookups::GetThoroughfareAddressRecord(lookup_, Text(Postcode)); });
}

HRESULT QuorvexObject::GetFullAddressToList(BSTR* Postcode, VARIANT_BOOL* result) {
    return Answer(result, [&] { return lookups::GetFullAddressToList(lookup_, Text(Postcode)); });
}

HRESULT QuorvexObject::GetFullAddressToListAdv(BSTR* company, BSTR* house, BSTR* street, BSTR* town, BSTR* county,
                                               BSTR* postcodearea, VARIANT_BOOL* result) {
    return Answer(result, [&] {
        const web::AdvancedCriteria criteria{Text(company), Text(house),  Text(street),
                                             Text(town),    Text(county), Text(postcodearea)};
        return lookups::GetFullAddressToListAdv(lookup_, criteria);
    });
}

HRESULT QuorvexObject::GetFullAddressLineForSelectionAdv(BSTR* id, BSTR* LineType, BSTR* result) {
    return Answer(result, [&] {
        const lookups::AdvancedLine line = lookups::GetFullAddressLineForSelectionAdv(lookup_);
        ReplaceText(LineType, line.lineType);
        ReplaceText(id, line.id);
        return line.text;
    });
}

HRESULT QuorvexObject::GetFullAddressLineForSelection(BSTR* result) {
    return Answer(result, [&] { return lookups::GetFullAddressLineForSelection(lookup_); });
}

HRESULT QuorvexObject::GetFullAddressRecord(long* SelectedListIndex, VARIANT_BOOL* result) {
    return Answer(result, [&] { return lookups::GetFullAddressRecord(lookup_, ValueOr(SelectedListIndex, -1)); });
}

HRESULT QuorvexObject::GetFullAddressRecordByAddressID(BSTR* AddressID, VARIANT_BOOL* result) {
    return Answer(result, [&] { return lookups::GetFullAddressRecordByAddressID(lookup_, Text(AddressID)); });
}

HRESULT QuorvexObject::GetPostZonAddressLongLat(double TargetLongitude, double TargetLatitude, BSTR, BSTR* result) {
    return Answer(result, [&] { return lookups::GetPostZonAddressLongLat(lookup_, TargetLongitude, TargetLatitude); });
}

HRESULT QuorvexObject::GetPostZonAddressRecord(BSTR* Postcode, VARIANT_BOOL* result) {
    return Answer(result, [&] { return lookups::GetPostZonAddressRecord(lookup_, Text(Postcode)); });
}

HRESULT QuorvexObject::GetDistance(double* Latitude1, double* Longtitude1, double* Latitude2, double* Longtitude2,
                                   double* result) {
    return Answer(result, [&] {
        return lookups::GetDistance(lookup_.platform, ValueOr(Latitude1, 0), ValueOr(Longtitude1, 0),
                                    ValueOr(Latitude2, 0), ValueOr(Longtitude2, 0));
    });
}

HRESULT QuorvexObject::Nearest_StartList(BSTR* TargetPostcode, double* WithInKm, double* Longtitude, double* Latitude,
                                         double* Difference, VARIANT_BOOL* result) {
    return Answer(result, [&] {
        double longitude = 0;
        double latitude = 0;
        double boxSize = 0;
        if (!lookups::Nearest_StartList(lookup_, Text(TargetPostcode), ValueOr(WithInKm, 0), longitude, latitude,
                                        boxSize)) {
            return false;
        }
        if (Longtitude != nullptr) *Longtitude = longitude;
        if (Latitude != nullptr) *Latitude = latitude;
        if (Difference != nullptr) *Difference = boxSize;
        return true;
    });
}

HRESULT QuorvexObject::Nearest_AddToList(double* Longtitude, double* Latitude, BSTR* YouData1, BSTR* YouData2,
                                         BSTR* YouData3, VARIANT_BOOL* result) {
    return Answer(result, [&] {
        return lookups::Nearest_AddToList(lookup_, ValueOr(Longtitude, 0), ValueOr(Latitude, 0), Text(YouData1),
                                          Text(YouData2), Text(YouData3));
    });
}

HRESULT QuorvexObject::Nearest_GetNumberOfRecordsReturned(long* result) {
    return Answer(result, [&] { return lookups::Nearest_GetNumberOfRecordsReturned(lookup_); });
}

HRESULT QuorvexObject::Nearest_GetRecord(long* x, double* distance, double* Longtitude, double* Latitude,
                                         BSTR* YouData1, BSTR* YouData2, BSTR* YouData3, VARIANT_BOOL* result) {
    return Answer(result, [&] {
        lookups::NearestRecord record;
        if (!lookups::Nearest_GetRecord(lookup_, ValueOr(x, 0), record)) return false;
        if (distance != nullptr) *distance = record.distance;
        if (Longtitude != nullptr) *Longtitude = record.longitude;
        if (Latitude != nullptr) *Latitude = record.latitude;
        ReplaceText(YouData1, record.text1);
        ReplaceText(YouData2, record.text2);
        ReplaceText(YouData3, record.text3);
        return true;
    });
}

HRESULT QuorvexObject::Nearest_EndList() {
    return Guard([&] { lookups::Nearest_EndList(lookup_); });
}

} // namespace quorvex::server
