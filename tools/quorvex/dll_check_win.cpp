#include "quorvex/dll_check_win.h"

#include "build_constants.h"
#include "quorvex/pe_file.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <windows.h>

#include <softpub.h>
#include <wintrust.h>

#include <algorithm>
#include <optional>

namespace quorvex::cli {
namespace {

std::wstring SystemFolder(bool is64Bit) {
    std::wstring windows(MAX_PATH, L'\0');
    windows.resize(GetSystemWindowsDirectoryW(windows.data(), static_cast<UINT>(windows.size())));
    if constexpr (sizeof(void*) == 8) return windows + (is64Bit ? L"\\System32\\" : L"\\SysWOW64\\");
    BOOL wow = FALSE;
    const bool on64 = IsWow64Process(GetCurrentProcess(), &wow) && wow;
    return windows + (is64Bit ? L"\\Sysnative\\" : on64 ? L"\\SysWOW64\\" : L"\\System32\\");
}

// API sets are names that the loader maps to other DLLs; no file has such a name.
bool IsApiSet(const std::wstring& upperName) {
    return upperName.starts_with(L"API-MS-WIN-") || upperName.starts_with(L"EXT-MS-WIN-");
}

std::wstring MissingImports(const PeFile& pe, const std::wstring& dllFolder) {
    std::wstring missing;
    const std::wstring system = SystemFolder(pe.is64Bit);
    for (const std::string& import : pe.imports) {
        const std::wstring name = support::FromLatin1(import);
        const bool found = IsApiSet(support::UpperCase(name)) || support::FileExists(system + name) ||
                           support::FileExists(dllFolder + L"\\" + name);
        if (!found) missing += (missing.empty() ? L"" : L", ") + name;
    }
    return missing;
}

LONG VerifySignature(const std::wstring& path) {
    WINTRUST_FILE_INFO file{};
    file.cbStruct = sizeof(file);
    file.pcwszFilePath = path.c_str();
    WINTRUST_DATA data{};
    data.cbStruct = sizeof(data);
    data.dwUIChoice = WTD_UI_NONE;
    data.fdwRevocationChecks = WTD_REVOKE_NONE; // the examination must not wait for a server
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &file;
    data.dwStateAction = WTD_STATEACTION_VERIFY;
    data.dwProvFlags = WTD_CACHE_ONLY_URL_RETRIEVAL;
    GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
    const LONG result = WinVerifyTrust(nullptr, &action, &data);
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    WinVerifyTrust(nullptr, &action, &data);
    return result;
}

void CheckSignature(const std::wstring& path, const PeFile& pe, DllState& state) {
    if (!pe.hasSignature) {
        state.signature = L"not signed";
        return;
    }
    const LONG result = VerifySignature(path);
    if (result == ERROR_SUCCESS) {
        state.signature = L"signature valid";
    } else if (result == TRUST_E_BAD_DIGEST) {
        state.signature = L"signature broken";
        state.faults.push_back({false, L"was changed after it was signed", L"install it again from a trusted copy"});
        state.usable = false;
    } else {
        state.signature = L"signed by a publisher that this computer does not trust";
        state.faults.push_back({true, L"is signed by a publisher that this computer does not trust",
                                L"install the publisher's certificate, or use a build that is signed by a known one"});
    }
}

void CompareVersion(const PeFile& pe, DllState& state) {
    const std::wstring own = std::to_wstring(kVersionMajor) + L"." + std::to_wstring(kVersionMinor) + L"." +
                             std::to_wstring(kVersionRevision);
    state.version = support::FromLatin1(pe.version);
    if (!(state.version + L".").starts_with(own + L".")) {
        state.faults.push_back(
            {true, L"is version " + state.version + L", this program " + own, L"install one version of both"});
    }
}

} // namespace

DllState CheckDll(const std::wstring& path, bool expect64Bit) {
    DllState state;
    std::optional<PeFile> pe;
    if (GetFileAttributesW(support::ToPath(path).c_str()) == INVALID_FILE_ATTRIBUTES) {
        state.faults.push_back({false, L"the file does not exist", {}});
        return state;
    }
    try {
        pe = ReadPeFile(support::ReadFileBytes(path));
    } catch (const support::Error& error) {
        state.faults.push_back({false, error.Description(), L"give this account read rights on the file"});
        return state;
    }
    if (!pe || !pe->isDll) {
        state.faults.push_back({false, L"is damaged or no DLL", L"install it again"});
        return state;
    }
    if (pe->is64Bit != expect64Bit) {
        state.faults.push_back({false, std::wstring(L"is the ") + (pe->is64Bit ? L"64" : L"32") + L"-bit DLL", {}});
        return state;
    }
    const std::wstring missing = MissingImports(*pe, path.substr(0, path.find_last_of(L"\\/")));
    state.usable = missing.empty();
    if (!missing.empty()) {
        state.faults.push_back({false, L"needs DLLs that are not here: " + missing, L"install it again"});
    }
    CompareVersion(*pe, state);
    CheckSignature(path, *pe, state);
    return state;
}

std::wstring LibraryVersion() {
    return std::to_wstring(kVersionMajor) + L"." + std::to_wstring(kVersionMinor);
}

} // namespace quorvex::cli
