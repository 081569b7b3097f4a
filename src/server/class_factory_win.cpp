#include "server/class_factory_win.h"

#include "server/quorvex_object_win.h"
#include "support/floating_point.h"

#include <new>

namespace quorvex::server {

HRESULT ClassFactory::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IClassFactory)) return E_NOINTERFACE;
    *object = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
}

ULONG ClassFactory::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG ClassFactory::Release() {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
}

HRESULT ClassFactory::CreateInstance(IUnknown* outer, REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    const support::DefaultArithmetic arithmetic;
    try {
        auto* const created = new QuorvexObject;
        const HRESULT hr = created->QueryInterface(iid, object);
        created->Release();
        return hr;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

HRESULT ClassFactory::LockServer(BOOL lock) {
    LockModule(lock != FALSE);
    return S_OK;
}

} // namespace quorvex::server
