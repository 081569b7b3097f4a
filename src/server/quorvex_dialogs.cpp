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

HRESULT QuorvexObject::LMUpdateData(VARIANT_BOOL*, BSTR*, VARIANT_BOOL* result) {
    if (result == nullptr) return E_POINTER;
    *result = VARIANT_FALSE;
    return S_OK;
}

HRESULT QuorvexObject::LMGetLastUpdateDate(BSTR*, BSTR* result) {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    return S_OK;
}

} // namespace quorvex::server
