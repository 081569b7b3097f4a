#include "lookups/address_record.h"

#include "localdata/data_file_names.h"
#include "lookups/data_file.h"
#include "lookups/guarded.h"
#include "lookups/local_replies.h"
#include "object/reply_header.h"
#include "support/text.h"
#include "web/data_request.h"
#include "web/endpoints.h"

namespace quorvex::lookups {
namespace {

constexpr std::int32_t kSelectableLines = 100;
constexpr std::size_t kShortestPostcode = 4;
constexpr std::size_t kLongestPostcode = 8;

} // namespace

bool GetFullAddressRecord(object::Quorvex& object, std::int32_t selectedListIndex) {
    const bool selectable = selectedListIndex >= 0 && selectedListIndex < kSelectableLines;
    const std::wstring addressId =
        selectable ? object.AddressData.Identifier(static_cast<std::size_t>(selectedListIndex)) : std::wstring();
    // Where no line was handed out, asking the service would only cost credit.
    if (addressId.empty()) return RunLookup(object, [] { return false; });
    return GetFullAddressRecordByAddressID(object, addressId);
}

bool GetFullAddressRecordByAddressID(object::Quorvex& object, const std::wstring& addressId) {
    return RunLookup(object, [&] {
        return WithDataFile(object, L'F', false, [&] {
            const std::wstring reply =
                object.LocalMode() ? LocalAddressRecord(object, addressId)
                                   : web::GetDataFromHTTPRequest(object, web::GetAddressRecordUrl(object, addressId));
            object::ReadReplyHeader(object, reply, true);
            if (object.General_confirm && object.Address_Id.empty()) object.Address_Id = addressId;
            return object.General_confirm;
        });
    });
}

bool GetThoroughfareAddressRecord(object::Quorvex& object, const std::wstring& typed) {
    return RunLookup(object, [&] {
        const std::wstring postcode(support::Trim(typed));
        if (postcode.size() < kShortestPostcode || postcode.size() > kLongestPostcode) {
            object.General_errormessage = L"Please specify Postcode";
            return false;
        }
        return WithDataFile(object, L'T', false, [&] {
            const std::wstring reply =
                object.LocalMode()
                    ? LocalThoroughfareRecord(object, postcode)
                    : web::GetDataFromHTTPRequest(object, web::SearchForThoroughfareAddressUrl(object, postcode));
            object::ReadReplyHeader(object, reply, true);
            return object.General_confirm;
        });
    });
}

} // namespace quorvex::lookups
