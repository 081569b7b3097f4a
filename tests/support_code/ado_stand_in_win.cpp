#include "support_code/ado_stand_in.h"

#include "support/text.h"
#include "support_code/ado_objects.h"

#include <gtest/gtest.h>

namespace quorvex::testing {
namespace {

constexpr wchar_t kProvider[] = L"Microsoft.Jet.OLEDB.4.0";
constexpr wchar_t kProviderClass[] = L"{6B1F2C0E-52D1-4C1B-9A70-3B1E5B7C90D4}"; // the stand-in's own

template <typename Object>
class Factory final : public IClassFactory {
  public:
    explicit Factory(AdoStandIn& world) : world_(world) {}

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IClassFactory);
        *object = known ? static_cast<IClassFactory*>(this) : nullptr;
        if (!known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        auto* const made = new Object(world_);
        const HRESULT result = made->QueryInterface(id, object);
        made->Release();
        return result;
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  private:
    AdoStandIn& world_;
    ULONG references_ = 1;
};

} // namespace

AdoStandIn::AdoStandIn() {
    initialised_ = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    Register(L"ADODB.Connection", new Factory<AdoConnectionObject>(*this));
    Register(L"ADODB.Recordset", new Factory<AdoRecordsetObject>(*this));
}

AdoStandIn::~AdoStandIn() {
    for (const DWORD cookie : cookies_) CoRevokeClassObject(cookie);
    if (providerRegistered_) RegDeleteTreeW(HKEY_CLASSES_ROOT, kProvider);
    if (initialised_) CoUninitialize();
    EXPECT_EQ(liveObjects, 0) << "data access objects outlived their test";
}

void AdoStandIn::RegisterProvider() {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, kProvider, 0, KEY_READ, &key) == ERROR_SUCCESS) {
        RegCloseKey(key); // a real provider keeps its registration
    } else {
        const auto size = static_cast<DWORD>(sizeof kProviderClass);
        const std::wstring subkey = std::wstring(kProvider) + L"\\CLSID";
        ASSERT_EQ(RegSetKeyValueW(HKEY_CLASSES_ROOT, subkey.c_str(), nullptr, REG_SZ, kProviderClass, size),
                  ERROR_SUCCESS);
        providerRegistered_ = true;
    }
    Register(kProvider, new Factory<AdoConnectionObject>(*this));
}

// Takes over the caller's reference.
void AdoStandIn::Register(const wchar_t* progId, IClassFactory* factory) {
    CLSID classId{};
    DWORD cookie = 0;
    HRESULT result = CLSIDFromProgID(progId, &classId);
    if (SUCCEEDED(result)) {
        result = CoRegisterClassObject(classId, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie);
    }
    factory->Release();
    if (SUCCEEDED(result)) cookies_.push_back(cookie);
    ASSERT_HRESULT_SUCCEEDED(result) << "no class object for " << support::ToUtf8(progId);
}

} // namespace quorvex::testing
