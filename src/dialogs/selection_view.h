#pragma once

#include <cstddef>
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
inline constexpr wchar_t kCaptionHelp[] = L"Help?";
inline constexpr wchar_t kCaptionDownload[] = L"Download Updated Lists";
inline constexpr wchar_t kCaptionOpeningHelp[] = L"Opening Help, Please wait....";
inline constexpr wchar_t kEnterPostcode[] = L"Please enter Postcode and press the [Find] Button";
inline constexpr wchar_t kPickAddress[] = L"Please double click on address to select";
inline constexpr wchar_t kPickFromTree[] = L"Please double click on Building Name/Number to select address";
inline constexpr wchar_t kPickLine[] = L"Please select lines below to get address...";
inline constexpr wchar_t kAddressListName[] = L"Addresses"; // what a screen reader says, with the count
inline constexpr wchar_t kErrorTitle[] = L"Quorvex Lookup";

enum class View { Postcode, Criteria, Results };

enum class EnterAction { None, Select, Find, AdvancedFind };
EnterAction RouteEnter(View view, bool command1Selects, bool postcodeIsEmpty, bool advancedFindEnabled);

enum class EscapeAction { None, Unload, LeaveAdvanced };
EscapeAction RouteEscape(View view);

// The caption after a search or fetch: the account's text takes its place when it is to be shown.
std::wstring CaptionToRestore(const std::wstring& remembered, const std::wstring& creditsText, bool showAccountDetails);

// What a failure shows: the account's text and the error on a line each; otherwise takes the place of an error without
// a text, since an empty box would leave the user guessing.
std::wstring FailureText(const std::wstring& creditsText, const std::wstring& errorMessage,
                         const std::wstring& otherwise);
inline constexpr wchar_t kNothingFound[] = L"Nothing found!";
// Why the line at a position (from 0) of the list could not be fetched when the service does not say.
std::wstring FetchFailure(std::size_t position);

// The instruction over a list that shows some of all addresses.
std::wstring PickInstruction(std::size_t shown, std::size_t all);

// What STOP tells the user.
std::wstring StoppedText();

} // namespace quorvex::dialogs
