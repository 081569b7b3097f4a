#include "server/quorvex_object_win.h"

#include "support/log.h"
#include <new>

namespace quorvex::server {

QuorvexObject::QuorvexObject() {
    KeepModuleLoaded();
}

HRESULT QuorvexObject::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IDispatch) && !IsEqualIID(iid, IID__Quorvex)) {
        return E_NOINTERFACE;
    }
    *object = static_cast<_Quorvex*>(this);
    AddRef();
    return S_OK;
}

ULONG QuorvexObject::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG QuorvexObject::Release() {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
}

HRESULT QuorvexObject::GetTypeInfoCount(UINT* count) {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
}

HRESULT QuorvexObject::GetTypeInfo(UINT index, LCID, ITypeInfo** info) {
    if (info == nullptr) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    try {
        Dispatcher* const dispatcher = dispatcher_.Get();
        if (dispatcher == nullptr) return TYPE_E_CANTLOADLIBRARY;
        *info = dispatcher->Info();
        (*info)->AddRef();
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT QuorvexObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
    if (names == nullptr || ids == nullptr) return E_POINTER;
    try {
        Dispatcher* const dispatcher = dispatcher_.Get();
        return dispatcher == nullptr ? TYPE_E_CANTLOADLIBRARY : dispatcher->Info()->GetIDsOfNames(names, count, ids);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT QuorvexObject::Invoke(DISPID member, REFIID, LCID locale, WORD flags, DISPPARAMS* params, VARIANT* result,
                              EXCEPINFO* exception, UINT* badArgument) {
    if ((flags & DISPATCH_PROPERTYGET) != 0 && result != nullptr && params != nullptr && params->cArgs == 0) {
        if (const auto hr = GetProperty(member, result)) return *hr;
    }
    const support::DefaultArithmetic arithmetic;
    AddRef();
    HRESULT hr = E_OUTOFMEMORY;
    try {
        Dispatcher* const dispatcher = dispatcher_.Get();
        hr = dispatcher == nullptr
                 ? TYPE_E_CANTLOADLIBRARY
                 : dispatcher->Invoke(this, member, locale, flags, params, result, exception, badArgument);
    } catch (...) { // only memory can run out here; the methods keep their own failures
    }
    Release();
    return hr;
}

HRESULT QuorvexObject::LogPendingError() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        try {
            support::LogError(lookup_.platform, support::CurrentError());
        } catch (...) { // no memory for the text of the error
        }
    }
    return S_OK;
}

} // namespace quorvex::server
