#include "dialogs/address_dialog.h"
#include "localdata/status.h"
#include "server/quorvex_object_win.h"
#include "update/update_procedure.h"

// Dialogs and the maintenance of the local data.

namespace quorvex::server {

HRESULT QuorvexObject::SearchForFullAddressWithDialogue(BSTR* PostcodePrima, BSTR* Caption,
                                                        VARIANT_BOOL* ShowAccountDetails,
                                                        VARIANT_BOOL* AllowManageAccount, VARIANT_BOOL* DisplayErrors,
                                                        VARIANT_BOOL* result) {
    return Answer(result, [&] {
        return dialogs::SearchForFullAddressWithDialogue(lookup_, Text(PostcodePrima), Text(Caption),
                                                         IsTrue(ShowAccountDetails), IsTrue(AllowManageAccount),
                                                         IsTrue(DisplayErrors));
    });
}

HRESULT QuorvexObject::SearchForFullAddressWithDialogueAdv(BSTR* PostcodePrima, BSTR* Caption, BSTR* path,
                                                           VARIANT_BOOL* ShowAccountDetails,
                                                           VARIANT_BOOL* AllowManageAccount,
                                                           VARIANT_BOOL* DisplayErrors, VARIANT_BOOL* result) {
    return Answer(result, [&] {
        return dialogs::SearchForFullAddressWithDialogueAdv(lookup_, Text(PostcodePrima), Text(Caption), Text(path),
                                                            IsTrue(ShowAccountDetails), IsTrue(AllowManageAccount),
                                                            IsTrue(DisplayErrors));
    });
}

HRESULT QuorvexObject::LMUpdateData(VARIANT_BOOL* InternetIsAvailable, BSTR* Title, VARIANT_BOOL* result) {
    return Answer(result, [&] {
        return update::LMUpdateData(lookup_, platform_.UpdateSurroundings(), IsTrue(InternetIsAvailable), Text(Title));
    });
}

HRESULT QuorvexObject::LMGetLastUpdateDate(BSTR* DataType, BSTR* result) {
    return Answer(result, [&] { return localdata::LMGetLastUpdateDate(lookup_, Text(DataType)); });
}

} // namespace quorvex::server
