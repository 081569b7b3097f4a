#include "dialogs/activation_win.h"

#include <array>

namespace quorvex::dialogs {
namespace {

constexpr WORD kManifestResource = 2;

} // namespace

HINSTANCE OwnModule() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&OwnModule), &module);
    return module;
}

ActivationContext::ActivationContext() {
    std::array<wchar_t, 32768> path{};
    GetModuleFileNameW(OwnModule(), path.data(), static_cast<DWORD>(path.size() - 1));
    ACTCTXW request{};
    request.cbSize = sizeof request;
    request.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID | ACTCTX_FLAG_HMODULE_VALID;
    request.lpSource = path.data();
    request.lpResourceName = MAKEINTRESOURCEW(kManifestResource);
    request.hModule = OwnModule();
    context_ = CreateActCtxW(&request);
    active_ = context_ != INVALID_HANDLE_VALUE && ActivateActCtx(context_, &cookie_);
}

ActivationContext::~ActivationContext() {
    if (active_) DeactivateActCtx(0, cookie_);
    if (context_ != INVALID_HANDLE_VALUE) ReleaseActCtx(context_);
}

bool UserCanSeeWindows() {
    // Services run in session 0, where nobody sits since Windows Vista, even if the station says that it is visible.
    DWORD session = 1;
    if (ProcessIdToSessionId(GetCurrentProcessId(), &session) && session == 0) return false;
    USEROBJECTFLAGS flags{};
    const HWINSTA station = GetProcessWindowStation();
    if (!GetUserObjectInformationW(station, UOI_FLAGS, &flags, sizeof flags, nullptr)) return true;
    return (flags.dwFlags & WSF_VISIBLE) != 0;
}

} // namespace quorvex::dialogs
