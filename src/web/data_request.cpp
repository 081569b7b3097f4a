#include "web/data_request.h"

namespace quorvex::web {
namespace {

void ShowDetail(object::Quorvex& object, const std::wstring& text) {
    if (object.ShowHTTPcallsInDetailFlg == 0) return;
    object.platform.user.SetClipboardText(text);
    object.platform.user.ShowMessage(text, support::kStyleInformation, L"Detailed Debug Info (Also on clipboard!)");
}

} // namespace

const wchar_t* const kTimeOutMessage =
    L"Sorry your internet connection timed out.   Is the internet working? or a firewall blocking service?";

std::wstring GetDataFromHTTPRequest(support::Platform& platform, const std::wstring& url, int limitSeconds) {
    if (platform.web.RequestRunning()) return {};
    std::wstring reply = platform.web.GetUrl(url, limitSeconds);
    return reply == L"TimeOut" ? std::wstring(kTimeOutMessage) : reply;
}

std::wstring GetDataFromHTTPRequest(object::Quorvex& object, const std::wstring& url) {
    if (object.platform.web.RequestRunning()) return {};
    ShowDetail(object, L"Calling:\r\n" + url);
    std::wstring reply = GetDataFromHTTPRequest(object.platform, url, kRequestLimitSeconds);
    ShowDetail(object, L"Reply:\r\n" + reply);
    return reply;
}

} // namespace quorvex::web
