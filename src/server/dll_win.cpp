#include "server/class_factory_win.h"
#include "server/module_win.h"
#include "server/registration_win.h"

#include <quorvex_com.h>

#include <cwchar>
#include <new>

// The exports. There is no DllMain: loading the DLL does nothing.

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!IsEqualCLSID(clsid, CLSID_Quorvex)) return CLASS_E_CLASSNOTAVAILABLE;
    auto* const factory = new (std::nothrow) quorvex::server::ClassFactory;
    if (factory == nullptr) return E_OUTOFMEMORY;
    const HRESULT hr = factory->QueryInterface(iid, object);
    factory->Release();
    return hr;
}

STDAPI DllCanUnloadNow() {
    return quorvex::server::ModuleInUse() ? S_FALSE : S_OK;
}

STDAPI DllRegisterServer() {
    return quorvex::server::Register(quorvex::server::Scope::Machine);
}

STDAPI DllUnregisterServer() {
    return quorvex::server::Unregister(quorvex::server::Scope::Machine);
}

// regsvr32 /n /i:user registers for the current user only, without administrator rights.
STDAPI DllInstall(BOOL install, LPCWSTR commandLine) {
    using quorvex::server::Scope;
    const bool user = commandLine != nullptr && CompareStringOrdinal(commandLine, -1, L"user", -1, TRUE) == CSTR_EQUAL;
    if (!user && commandLine != nullptr && *commandLine != L'\0') return E_INVALIDARG;
    const Scope scope = user ? Scope::User : Scope::Machine;
    return install ? quorvex::server::Register(scope) : quorvex::server::Unregister(scope);
}
