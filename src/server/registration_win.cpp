#include "server/registration_win.h"

#include "build_constants.h"
#include "server/module_win.h"

#include <oleauto.h>
#include <olectl.h>
#include <quorvex_com.h>

#include <string>

// Windows has these two since Vista; the headers used here do not declare them.
extern "C" {
STDAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* fullPath, OLECHAR* helpFolder);
STDAPI UnRegisterTypeLibForUser(REFGUID library, WORD major, WORD minor, LCID locale, SYSKIND kind);
}

namespace quorvex::server {
namespace {

constexpr wchar_t kProgId[] = L"QuorvexLookup.Quorvex";
constexpr wchar_t kDescription[] = L"Quorvex address lookup";

#ifdef _WIN64
constexpr SYSKIND kSystemKind = SYS_WIN64;
#else
constexpr SYSKIND kSystemKind = SYS_WIN32;
#endif

std::wstring GuidText(REFGUID guid) {
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    return text;
}

std::wstring ModulePath() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(ModuleInstance(), path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

HKEY Root(Scope scope) {
    return scope == Scope::User ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

std::wstring Classes(const std::wstring& key) {
    return L"Software\\Classes\\" + key;
}

HRESULT SetValue(Scope scope, const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    const DWORD bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    return HRESULT_FROM_WIN32(
        static_cast<DWORD>(RegSetKeyValueW(Root(scope), Classes(key).c_str(), name, REG_SZ, value.c_str(), bytes)));
}

HRESULT DeleteTree(Scope scope, const std::wstring& key) {
    const LONG result = RegDeleteTreeW(Root(scope), Classes(key).c_str());
    return result == ERROR_FILE_NOT_FOUND ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(result));
}

// The class as registered for the other bitness: its class key is its own, the ProgID key serves both.
bool OtherBitnessRegistered(Scope scope) {
    const REGSAM view = kSystemKind == SYS_WIN64 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;
    HKEY key = nullptr;
    const std::wstring path = Classes(L"CLSID\\" + GuidText(CLSID_Quorvex));
    if (RegOpenKeyExW(Root(scope), path.c_str(), 0, KEY_READ | view, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

HRESULT RegisterClass(Scope scope, const std::wstring& path) {
    const std::wstring clsid = GuidText(CLSID_Quorvex);
    const std::wstring key = L"CLSID\\" + clsid;
    const std::wstring version = std::to_wstring(kVersionMajor) + L"." + std::to_wstring(kVersionMinor);
    const struct {
        std::wstring key;
        const wchar_t* name;
        std::wstring value;
    } values[] = {
        {key, nullptr, kDescription},
        {key + L"\\InprocServer32", nullptr, path},
        {key + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
        {key + L"\\ProgID", nullptr, kProgId},
        {key + L"\\TypeLib", nullptr, GuidText(LIBID_QuorvexLookup)},
        {key + L"\\Version", nullptr, version},
        {key + L"\\Programmable", nullptr, L""},
        {kProgId, nullptr, kDescription},
        {std::wstring(kProgId) + L"\\CLSID", nullptr, clsid},
    };
    for (const auto& value : values) {
        const HRESULT hr = SetValue(scope, value.key, value.name, value.value);
        if (FAILED(hr)) return hr;
    }
    return S_OK;
}

HRESULT RegisterLibrary(Scope scope, std::wstring path) {
    ITypeLib* library = nullptr;
    HRESULT hr = LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library);
    if (FAILED(hr)) return hr;
    hr = scope == Scope::User ? RegisterTypeLibForUser(library, path.data(), nullptr)
                              : RegisterTypeLib(library, path.data(), nullptr);
    library->Release();
    return hr;
}

// While the other bitness is registered, the library's key loses our entry only: the system's own call would take the
// interface away, whose key both bitnesses share under some systems. The last one takes everything, in both views.
HRESULT UnregisterLibrary(Scope scope) {
    const std::wstring interfaceKey = L"Interface\\" + GuidText(IID__Quorvex);
    if (OtherBitnessRegistered(scope)) {
        const std::wstring version = std::to_wstring(kVersionMajor) + L"." + std::to_wstring(kVersionMinor);
        const wchar_t* const own = kSystemKind == SYS_WIN64 ? L"\\0\\win64" : L"\\0\\win32";
        return DeleteTree(scope, L"TypeLib\\" + GuidText(LIBID_QuorvexLookup) + L"\\" + version + own);
    }
    const WORD major = static_cast<WORD>(kVersionMajor);
    const WORD minor = static_cast<WORD>(kVersionMinor);
    const HRESULT hr = scope == Scope::User
                           ? UnRegisterTypeLibForUser(LIBID_QuorvexLookup, major, minor, 0, kSystemKind)
                           : UnRegisterTypeLib(LIBID_QuorvexLookup, major, minor, 0, kSystemKind);
    for (const REGSAM view : {REGSAM{KEY_WOW64_64KEY}, REGSAM{KEY_WOW64_32KEY}}) {
        HKEY classes = nullptr;
        if (RegOpenKeyExW(Root(scope), L"Software\\Classes", 0, KEY_ALL_ACCESS | view, &classes) != ERROR_SUCCESS)
            continue;
        RegDeleteTreeW(classes, interfaceKey.c_str()); // absent where the call above took it
        RegCloseKey(classes);
    }
    // The answers for a library that is not registered; which one depends on the system.
    const bool absent = hr == TYPE_E_REGISTRYACCESS || hr == TYPE_E_LIBNOTREGISTERED || hr == E_INVALIDARG;
    return absent ? S_OK : hr;
}

} // namespace

HRESULT Register(Scope scope) {
    try {
        const std::wstring path = ModulePath();
        HRESULT hr = RegisterClass(scope, path);
        if (FAILED(hr)) {
            Unregister(scope);
            return SELFREG_E_CLASS;
        }
        hr = RegisterLibrary(scope, path);
        if (FAILED(hr)) {
            Unregister(scope);
            return SELFREG_E_TYPELIB;
        }
        return S_OK;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

HRESULT Unregister(Scope scope) {
    try {
        const HRESULT library = UnregisterLibrary(scope);
        const HRESULT clsid = DeleteTree(scope, L"CLSID\\" + GuidText(CLSID_Quorvex));
        const HRESULT progId = OtherBitnessRegistered(scope) ? S_OK : DeleteTree(scope, kProgId);
        if (FAILED(progId) || FAILED(clsid)) return SELFREG_E_CLASS;
        return SUCCEEDED(library) ? S_OK : SELFREG_E_TYPELIB;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

} // namespace quorvex::server
