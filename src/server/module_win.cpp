#include "server/module_win.h"

#include "http/transport_win.h"

namespace quorvex::server {
namespace {

volatile LONG references = 0;

} // namespace

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
    return references > 0 || http::OutstandingRequests() > 0;
}

HINSTANCE ModuleInstance() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&ModuleInstance), &module);
    return module;
}

} // namespace quorvex::server
