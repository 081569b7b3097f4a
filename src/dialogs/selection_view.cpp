#include "dialogs/selection_view.h"

namespace quorvex::dialogs {

EnterAction RouteEnter(View view, bool command1Selects, bool postcodeIsEmpty, bool advancedFindEnabled) {
    switch (view) {
    case View::Postcode:
        if (command1Selects) return EnterAction::Select;
        return postcodeIsEmpty ? EnterAction::None : EnterAction::Find;
    case View::Criteria:
        return advancedFindEnabled ? EnterAction::AdvancedFind : EnterAction::None;
    case View::Results:
        break;
    }
    return EnterAction::None;
}

EscapeAction RouteEscape(View view) {
    switch (view) {
    case View::Postcode:
        return EscapeAction::Unload;
    case View::Criteria:
        return EscapeAction::LeaveAdvanced;
    case View::Results:
        break;
    }
    return EscapeAction::None;
}

std::wstring CaptionToRestore(const std::wstring& remembered, const std::wstring& creditsText,
                              bool showAccountDetails) {
    return showAccountDetails && !creditsText.empty() ? creditsText : remembered;
}

std::wstring FailureText(const std::wstring& creditsText, const std::wstring& errorMessage,
                         const std::wstring& otherwise) {
    if (creditsText.empty() && errorMessage.empty()) return otherwise;
    return creditsText + L"\r\n" + (errorMessage.empty() ? otherwise : errorMessage);
}

std::wstring FetchFailure(std::size_t position) {
    constexpr std::size_t kSelectableLines = 100;
    if (position < kSelectableLines) return L"The address could not be fetched.";
    return L"Only the first 100 addresses of a list can be fetched.";
}

std::wstring PickInstruction(std::size_t shown, std::size_t all) {
    if (shown >= all) return kPickAddress;
    return kPickAddress + (L" (" + std::to_wstring(shown) + L" of " + std::to_wstring(all) + L")");
}

std::wstring StoppedText() {
    return L"You have stopped the lookup process!\r\n\r\n"
           L"If the lookup program had been taking a long time to search it may be your are having problems accessing "
           L"the internet, or you personall firewall is stopping communication.\r\n\r\n"
           L"Make sure you have access to internet and no firewalls are stopping communication";
}

} // namespace quorvex::dialogs
