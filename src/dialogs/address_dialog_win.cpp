#include "dialogs/address_dialog.h"

#include "dialogs/address_form_win.h"
#include "lookups/data_file.h"
#include "pages/pages.h"

namespace quorvex::dialogs {
namespace {

bool RunDialog(object::Quorvex& object, const AddressFormSettings& settings) {
    if (!UserCanSeeWindows()) return false;
    bool selected = false;
    bool help = false;
    {
        frmAddress form(object, settings);
        selected = form.ShowModal();
        help = form.GotoHelp();
    }
    if (help) pages::DisplayWebPage(object, object.EnsureServerURL() + L"/Software/AdvancedSearch.htm");
    return selected;
}

} // namespace

bool SearchForFullAddressWithDialogue(object::Quorvex& object, const std::wstring& postcodePrima,
                                      const std::wstring& caption, bool showAccountDetails, bool allowManageAccount,
                                      bool displayErrors) {
    object.EnsureServerURL();
    if (object.LocalMode() && !lookups::DataFileUsable(object, L"PAF_FULL.dat", false)) return false;
    AddressFormSettings settings;
    settings.PostcodePrimer = postcodePrima;
    settings.caption = caption;
    settings.showAccountDetails = showAccountDetails;
    settings.AllowBuyMoreButton = allowManageAccount;
    settings.displayErrors = displayErrors;
    return RunDialog(object, settings);
}

bool SearchForFullAddressWithDialogueAdv(object::Quorvex& object, const std::wstring& postcodePrima,
                                         const std::wstring& caption, const std::wstring& path, bool showAccountDetails,
                                         bool allowManageAccount, bool displayErrors) {
    object.EnsureServerURL();
    if (object.LocalMode()) {
        object.platform.user.ShowMessage(L"The Advanced search is not available in Local Mode", support::kStyleCritical,
                                         kErrorTitle);
        return false;
    }
    AddressFormSettings settings;
    settings.PostcodePrimer = postcodePrima;
    settings.caption = caption;
    settings.path = path;
    settings.advanced = true;
    settings.showAccountDetails = showAccountDetails;
    settings.AllowBuyMoreButton = allowManageAccount;
    settings.displayErrors = displayErrors;
    return RunDialog(object, settings);
}

} // namespace quorvex::dialogs
