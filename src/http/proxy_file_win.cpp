#include "http/proxy_file_win.h"

#include "object/tag_reader.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <windows.h>

namespace quorvex::http {
namespace {

std::wstring CurrentDirectory() {
    const DWORD needed = GetCurrentDirectoryW(0, nullptr);
    std::wstring path(needed, L'\0');
    const DWORD length = GetCurrentDirectoryW(needed, path.data());
    path.resize(length < needed ? length : 0);
    return path;
}

} // namespace

std::wstring ProxyFromFile() {
    const std::wstring path = CurrentDirectory() + L"\\RegServerProxySettings.xml";
    // The file is rarely there, and this question costs a tenth of opening it.
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES || !support::FileExists(path)) return {};
    try {
        const std::wstring text = support::DecodeReply(support::ReadFileBytes(path), {});
        std::wstring proxy = object::ReadElement(text, L"Proxy_Port_80");
        // Line ends and blanks around the text come from editors; with them no proxy name is valid.
        proxy.erase(0, proxy.find_first_not_of(L" \t\r\n"));
        proxy.erase(proxy.find_last_not_of(L" \t\r\n") + 1);
        return proxy;
    } catch (const support::Error&) { // unreadable counts as not there
        return {};
    }
}

} // namespace quorvex::http
