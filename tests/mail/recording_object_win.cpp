#include "mail/recording_object_win.h"

#include "support/dispatch_win.h"

#include <gtest/gtest.h>

namespace quorvex::testing {
namespace {

std::wstring TextOf(const VARIANT& value) {
    switch (value.vt) {
    case VT_BSTR:
        return L"\"" + std::wstring(value.bstrVal, SysStringLen(value.bstrVal)) + L"\"";
    case VT_I4:
        return std::to_wstring(value.lVal);
    case VT_BOOL:
        return value.boolVal != VARIANT_FALSE ? L"True" : L"False";
    default:
        return L"?type " + std::to_wstring(value.vt);
    }
}

// The counting that every object shares; it also answers to the interface that it implements.
template <typename Interface>
class Counted : public Interface {
  public:
    virtual ~Counted() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        *object = id == IID_IUnknown || id == __uuidof(Interface) ? this : nullptr;
        if (*object == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

  private:
    ULONG references_ = 1;
};

class RecordingObject final : public Counted<IDispatch> {
  public:
    RecordingObject(MailScript& script, const std::wstring& name) : script_(script), name_(name) { ++script_.objects; }
    ~RecordingObject() override { --script_.objects; }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        if (count != 1) return E_NOTIMPL;
        members_.emplace_back(names[0]);
        ids[0] = static_cast<DISPID>(members_.size());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* exception, UINT*) override {
        const std::wstring call = name_ + L"." + members_.at(static_cast<std::size_t>(id - 1));
        const bool put = (flags & DISPATCH_PROPERTYPUT) != 0;
        std::wstring arguments;
        for (UINT i = parameters->cArgs; i > 0; --i) {
            arguments += (arguments.empty() ? L"" : L", ") + TextOf(parameters->rgvarg[i - 1]);
        }
        script_.calls.push_back(put ? call + L" = " + arguments : call + L"(" + arguments + L")");
        if (call == script_.failing) {
            exception->scode = E_FAIL;
            exception->bstrDescription = SysAllocString(script_.failure.c_str());
            return DISP_E_EXCEPTION;
        }
        const auto child = script_.children.find(call);
        if (result != nullptr && child != script_.children.end()) {
            result->vt = VT_DISPATCH;
            result->pdispVal = MakeRecordingObject(script_, child->second);
        }
        return S_OK;
    }

  private:
    MailScript& script_;
    std::wstring name_;
    std::vector<std::wstring> members_;
};

class RecordingFactory final : public Counted<IClassFactory> {
  public:
    RecordingFactory(MailScript& script, const std::wstring& name) : script_(script), name_(name) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        IDispatch* const made = MakeRecordingObject(script_, name_);
        const HRESULT result = made->QueryInterface(id, object);
        made->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

  private:
    MailScript& script_;
    std::wstring name_;
};

} // namespace

IDispatch* MakeRecordingObject(MailScript& script, const std::wstring& name) {
    return new RecordingObject(script, name);
}

ProgramStandIn::ProgramStandIn(const wchar_t* progId, const wchar_t* classId, MailScript& script,
                               const std::wstring& name)
    : key_(std::wstring(L"Software\\Classes\\") + progId) {
    SetClass(classId);
    CLSID id{};
    EXPECT_EQ(CLSIDFromString(classId, &id), S_OK);
    auto* const factory = new RecordingFactory(script, name);
    EXPECT_EQ(CoRegisterClassObject(id, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_), S_OK);
    factory->Release();
}

void ProgramStandIn::SetClass(const std::wstring& classId) {
    const auto bytes = static_cast<DWORD>((classId.size() + 1) * sizeof(wchar_t));
    EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, (key_ + L"\\CLSID").c_str(), nullptr, REG_SZ, classId.c_str(), bytes),
              ERROR_SUCCESS);
}

ProgramStandIn::~ProgramStandIn() {
    CoRevokeClassObject(cookie_);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, key_.c_str());
}

} // namespace quorvex::testing
