#include "lookups/postcode.h"
#include "object/tag_reader.h"
#include "server/quorvex_object_win.h"
#include "server/text_arguments_win.h"
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
    if (result == nullptr) return E_POINTER;
    VariantInit(result);
    return Guard([&] {
        result->bstrVal = NewText(object::GetVersion());
        result->vt = VT_BSTR;
    });
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
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    return Guard([&] { *result = NewText(lookup_.platform.machine.ComputerName()); });
}

HRESULT QuorvexObject::FormatPostCode(BSTR Postcode, BSTR* result) {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    return Guard([&] { *result = NewText(lookups::FormatPostCode(Text(Postcode))); });
}

HRESULT QuorvexObject::GetBetweenTags(BSTR* AttributeName, BSTR* html, BSTR* ToEndChr, short* ConsumeHTMLBefore,
                                      BSTR* DefaultValue, BSTR* result) {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    return Guard([&] {
        std::wstring text = Text(html);
        const std::wstring end = ToEndChr == nullptr ? std::wstring(L"\"") : Text(ToEndChr);
        const bool consume = ValueOr(ConsumeHTMLBefore, 0) != 0;
        const std::wstring value = object::GetBetweenTags(Text(AttributeName), text, end, consume, Text(DefaultValue));
        *result = NewText(value);
        if (consume) ReplaceText(html, text);
    });
}

HRESULT QuorvexObject::GetDataFromHTTPRequest(BSTR* URL, BSTR* result) {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    return Guard([&] { *result = NewText(web::GetDataFromHTTPRequest(lookup_, Text(URL))); });
}

} // namespace quorvex::server
