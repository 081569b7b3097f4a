#include "lookups/address_list.h"

#include "localdata/data_file_names.h"
#include "lookups/data_file.h"
#include "lookups/guarded.h"
#include "lookups/local_replies.h"
#include "lookups/postcode.h"
#include "object/reply_header.h"
#include "object/tag_reader.h"
#include "support/error.h"
#include "support/text.h"
#include "web/data_request.h"

#include <cmath>
#include <limits>

namespace quorvex::lookups {
namespace {

constexpr int kLastLine = 100; // lines are handed out while the counter is at most this: 101 of them

void ClearList(object::Quorvex& object) {
    object.AddressData.Clear();
    object.RecordCount = 0;
}

std::int32_t ReadRecordCount(const std::wstring& reply) {
    const std::wstring text = object::ReadElement(reply, L"recordcount");
    if (support::Trim(text).empty()) return 0;
    const double count = support::ParseNumber(text);
    if (std::abs(count) > std::numeric_limits<std::int32_t>::max())
        throw support::Error(support::kErrorOverflow, L"Overflow");
    return static_cast<std::int32_t>(std::lround(count));
}

bool SearchWeb(object::Quorvex& object, const std::wstring& url, std::wstring_view startTag, std::wstring_view endTag) {
    const std::wstring reply = web::GetDataFromHTTPRequest(object, url);
    object::ReadReplyHeader(object, reply, false);
    object.RecordCount = ReadRecordCount(reply);
    object.AddressData.Assign(object::ReadBetweenTags(reply, startTag, endTag));
    return object.General_confirm;
}

bool SearchLocal(object::Quorvex& object, const PostcodeAndHouse& search) {
    LocalList list = LocalAddressList(object, search.postcode, search.house);
    object::ReadReplyHeader(object, list.reply, false);
    object.RecordCount = list.recordCount;
    // As in web mode, where the header's reader finds the first line's identifier in the reply.
    object.Address_Id = support::Trim(object::ReadElement(list.records, L"id"));
    object.AddressData.Assign(std::move(list.records));
    return object.General_confirm;
}

} // namespace

bool GetFullAddressToList(object::Quorvex& object, const std::wstring& postcode) {
    ClearList(object);
    return RunLookup(object, [&] {
        const PostcodeAndHouse search = SplitCommaForm(postcode);
        if (object.LocalMode()) return WithDataFile(object, L'F', false, [&] { return SearchLocal(object, search); });
        return SearchWeb(object, web::SearchForAddressUrl(object, search.postcode), L"<addressdata>",
                         L"</addressdata>");
    });
}

bool GetFullAddressToListAdv(object::Quorvex& object, const web::AdvancedCriteria& criteria) {
    ClearList(object);
    return RunLookup(object, [&] {
        return SearchWeb(object, web::SearchForAddressAdvUrl(object, criteria), L"<records>", L"</records>");
    });
}

std::wstring GetFullAddressLineForSelection(object::Quorvex& object) {
    return Guarded(object, std::wstring(), [&]() -> std::wstring {
        object::StoredList& list = object.AddressData;
        const std::wstring element = list.TakeBetween(L"<record>", L"</record>");
        // Also at the end of the list, so that the position behind the last line selects nothing.
        list.SetIdentifier(static_cast<std::size_t>(list.HandedOut()), object::ReadElement(element, L"id"));
        std::wstring line(support::Trim(object::ReadElement(element, L"line")));
        if (element.empty() || list.HandedOut() > kLastLine) return {};
        list.CountHandedOut();
        return line;
    });
}

AdvancedLine GetFullAddressLineForSelectionAdv(object::Quorvex& object) {
    return Guarded(object, AdvancedLine(), [&] {
        AdvancedLine line;
        object::StoredList& list = object.AddressData;
        const std::wstring_view rest = list.Rest();
        line.lineType = object::FindBetweenTags(rest, L"<", L">").value;
        if (line.lineType == L"h") {
            line.text = support::Trim(list.TakeBetween(L"<h>", L"</h>"));
        } else if (line.lineType == L"l") {
            line.text = support::Trim(list.TakeBetween(L"<l>", L"</l>"));
            line.id = list.TakeBetween(L"<id>", L"</id>");
        } else {
            line.lineType.clear(); // not an advanced list: an empty type tells the caller to stop
        }
        return line;
    });
}

} // namespace quorvex::lookups
