#include "lookups/postzon.h"

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

constexpr std::size_t kShortestKey = 5;

} // namespace

bool GetPostZonAddressRecord(object::Quorvex& object, const std::wstring& typed) {
    return RunLookup(object, [&] {
        const std::wstring key(support::Trim(typed));
        if (key.size() < kShortestKey) {
            object.General_errormessage = L"Please specify Postcode";
            return false;
        }
        return WithDataFile(object, L'Z', false, [&] {
            const std::wstring reply =
                object.LocalMode() ? LocalPostZonRecord(object, key)
                                   : web::GetDataFromHTTPRequest(object, web::SearchForPostZonDataUrl(object, key));
            object::ReadReplyHeader(object, reply, false);
            return object.General_confirm;
        });
    });
}

std::wstring GetPostZonAddressLongLat(object::Quorvex& object, double longitude, double latitude) {
    if (!object.LocalMode()) return {};
    return Guarded(object, std::wstring(), [&]() -> std::wstring {
        return WithDataFile(object, L'Z', std::wstring(),
                            [&] { return LocalNearestPostcode(object, longitude, latitude); });
    });
}

} // namespace quorvex::lookups
