#pragma once

#include <string>

namespace quorvex::dialogs {

// Captions and routing of the address selection dialog, without a window.

inline constexpr wchar_t kCaptionFind[] = L"&Find";
inline constexpr wchar_t kCaptionStop[] = L"STOP";
inline constexpr wchar_t kCaptionCancel[] = L"&Cancel";
inline constexpr wchar_t kCaptionSelect[] = L"&Select";
inline constexpr wchar_t kCaptionSearching[] = L"Web Address Server is Searching for Address...";
inline constexpr wchar_t kCaptionStopped[] = L"Stopped... Problems with internet connection";
inline constexpr wchar_t kCaptionFetching[] = L"Getting Address Record from Server...";
inline constexpr wchar_t kCaptionDownloading[] = L"Downloading Data, please wait...";
inline constexpr wchar_t kCaptionOpeningHelp[] = L"Opening Help, Please wait....";
inline constexpr wchar_t kEnterPostcode[] = L"Please enter Postcode and press the [Find] Button";
inline constexpr wchar_t kPickAddress[] = L"Please double click on address to select";
inline constexpr wchar_t kPickFromTree[] = L"Please double click on Building Name/Number to select address";
inline constexpr wchar_t kPickLine[] = L"Please select lines below to get address...";
inline constexpr wchar_t kErrorTitle[] = L"Quorvex Lookup";

enum class View { Postcode, Criteria, Results };

enum class EnterAction { None, Select, Find, AdvancedFind };
EnterAction RouteEnter(View view, bool command1Selects, bool postcodeIsEmpty, bool advancedFindEnabled);

enum class EscapeAction { None, Unload, LeaveAdvanced };
EscapeAction RouteEscape(View view);

// The caption after a search or fetch: the account's text takes its place when it is to be shown.
std::wstring CaptionToRestore(const std::wstring& remembered, const std::wstring& creditsText, bool showAccountDetails);

// What a failure shows: the account's text and the error on a line each.
std::wstring FailureText(const std::wstring& creditsText, const std::wstring& errorMessage);

// What STOP tells the user.
std::wstring StoppedText();

} // namespace quorvex::dialogs
