#include "localdata/status.h"
#include "localdata/update_procedure.h"
#include "server/quorvex_object.h"
#include "server/text_arguments.h"

// Dialogs and the maintenance of the local data.

namespace quorvex::server {

HRESULT QuorvexObject::SearchForFullAddressWithDialogue(BSTR*, BSTR*, VARIANT_BOOL*, VARIANT_BOOL*, VARIANT_BOOL*,
                                                        VARIANT_BOOL* result) {
    if (result == nullptr) return E_POINTER;
    *result = VARIANT_FALSE;
    return S_OK;
}

HRESULT QuorvexObject::SearchForFullAddressWithDialogueAdv(BSTR*, BSTR*, BSTR*, VARIANT_BOOL*, VARIANT_BOOL*,
                                                           VARIANT_BOOL*, VARIANT_BOOL* result) {
    if (result == nullptr) return E_POINTER;
    *result = VARIANT_FALSE;
    return S_OK;
}

HRESULT QuorvexObject::LMUpdateData(VARIANT_BOOL* InternetIsAvailable, BSTR* Title, VARIANT_BOOL* result) {
    if (result == nullptr) return E_POINTER;
    *result = VARIANT_FALSE;
    return Guard([&] {
        const bool internet = ValueOr(InternetIsAvailable, VARIANT_FALSE) != VARIANT_FALSE;
        *result = Boolean(localdata::LMUpdateData(lookup_, internet, Text(Title)));
    });
}

HRESULT QuorvexObject::LMGetLastUpdateDate(BSTR* DataType, BSTR* result) {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    return Guard([&] { *result = NewText(localdata::LMGetLastUpdateDate(lookup_, Text(DataType))); });
}

} // namespace quorvex::server
