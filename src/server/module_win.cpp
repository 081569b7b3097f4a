#include "server/module_win.h"

#include "http/transport_win.h"

namespace quorvex::server {
namespace {

volatile LONG references = 0;
volatile LONG pinned = 0;

} // namespace

void KeepModuleLoaded() {
    HMODULE module = nullptr;
    if (InterlockedCompareExchange(&pinned, 1, 0) == 1) return;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&KeepModuleLoaded), &module);
}

ModuleReference::ModuleReference() {
    InterlockedIncrement(&references);
}

ModuleReference::~ModuleReference() {
    InterlockedDecrement(&references);
}

void LockModule(bool lock) {
    if (lock) {
        InterlockedIncrement(&references);
    } else {
        InterlockedDecrement(&references);
    }
}

bool ModuleInUse() {
    return pinned != 0 || references > 0 || http::OutstandingRequests() > 0;
}

HINSTANCE ModuleInstance() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&ModuleInstance), &module);
    return module;
}

} // namespace quorvex::server
