#pragma once

#include "object/quorvex.h"

#include <string>

namespace quorvex::dialogs {

// The modal dialogs. True when the user picked an address; its record then stands in the object's Address_ properties.
// False at once where nobody sees windows.
//
// postcodePrima: searched for at once unless empty; "ADV" opens the advanced view. showAccountDetails: the account's
// text becomes the caption after a search. allowManageAccount: the account button is shown when the service says so.
// displayErrors: failures are shown in message boxes.
bool SearchForFullAddressWithDialogue(object::Quorvex& object, const std::wstring& postcodePrima,
                                      const std::wstring& caption, bool showAccountDetails, bool allowManageAccount,
                                      bool displayErrors);

// With the advanced view; web mode only. path: the folder of the lookup lists.
bool SearchForFullAddressWithDialogueAdv(object::Quorvex& object, const std::wstring& postcodePrima,
                                         const std::wstring& caption, const std::wstring& path, bool showAccountDetails,
                                         bool allowManageAccount, bool displayErrors);

} // namespace quorvex::dialogs
