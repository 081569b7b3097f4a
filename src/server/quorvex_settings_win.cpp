#include "lookups/postcode.h"
#include "object/tag_reader.h"
#include "server/quorvex_object_win.h"
#include "web/data_request.h"

// Settings and small methods of the lookup object.

namespace quorvex::server {

HRESULT QuorvexObject::LMSetOverideComputerName(BSTR* ComputerName) {
    return Guard([&] { lookup_.LMSetOverideComputerName(Text(ComputerName)); });
}

HRESULT QuorvexObject::LMSetDataPath(BSTR* DataPath) {
    return Guard([&] { lookup_.LMSetDataPath(Text(DataPath)); });
}

HRESULT QuorvexObject::SetDataKey(BSTR* DataKey) {
    return Guard([&] { lookup_.SetDataKey(Text(DataKey)); });
}

HRESULT QuorvexObject::GetVersion(VARIANT* result) {
    return Answer(result, [] { return object::GetVersion(); });
}

HRESULT QuorvexObject::SetHomePostCode(BSTR* HomePostCode) {
    return Guard([&] { lookup_.SetHomePostCode(Text(HomePostCode)); });
}

HRESULT QuorvexObject::SetResellerID(long* ResellerID) {
    return Guard([&] { lookup_.SetResellerID(ValueOr(ResellerID, 0)); });
}

HRESULT QuorvexObject::SetServiceURL(BSTR* URL) {
    return Guard([&] { lookup_.SetServiceURL(Text(URL)); });
}

HRESULT QuorvexObject::GetComputerName(BSTR* result) {
    return Answer(result, [&] { return lookup_.platform.machine.ComputerName(); });
}

HRESULT QuorvexObject::FormatPostCode(BSTR Postcode, BSTR* result) {
    return Answer(result, [&] { return lookups::FormatPostCode(Text(Postcode)); });
}

HRESULT QuorvexObject::GetBetweenTags(BSTR* AttributeName, BSTR* html, BSTR* ToEndChr, short* ConsumeHTMLBefore,
                                      BSTR* DefaultValue, BSTR* result) {
    return Answer(result, [&] {
        std::wstring text = Text(html);
        const std::wstring end = ToEndChr == nullptr ? std::wstring(L"\"") : Text(ToEndChr);
        const bool consume = ValueOr(ConsumeHTMLBefore, 0) != 0;
        std::wstring value = object::GetBetweenTags(Text(AttributeName), text, end, consume, Text(DefaultValue));
        if (consume) ReplaceText(html, text);
        return value;
    });
}

HRESULT QuorvexObject::GetDataFromHTTPRequest(BSTR* URL, BSTR* result) {
    return Answer(result, [&] { return web::GetDataFromHTTPRequest(lookup_, Text(URL)); });
}

} // namespace quorvex::server
