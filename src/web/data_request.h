#pragma once

#include "object/quorvex.h"

#include <string>

namespace quorvex::web {

// The fixed reply that stands for a time-out, a cancel or a network failure.
extern const wchar_t* const kTimeOutMessage;
inline constexpr int kRequestLimitSeconds = 30;

// The whole reply to a GET of the URL as text; kTimeOutMessage when there was none; empty when another request is
// waiting. With ShowHTTPcallsInDetailFlg the call and the reply are shown and put on the clipboard.
std::wstring GetDataFromHTTPRequest(object::Quorvex& object, const std::wstring& url);

// The same with a limit of its own and without the debug display; for the update procedure.
std::wstring GetDataFromHTTPRequest(support::Platform& platform, const std::wstring& url, int limitSeconds);

} // namespace quorvex::web
