#include "testing/scripted_object_win.h"

#include "support/text.h"

#include <gtest/gtest.h>
#include <objbase.h>

namespace quorvex::testing {
namespace {

using support::Variant;

std::wstring Shown(const Variant& value) {
    if (value.IsNull()) return L"Null";
    return value.Type() == VT_BSTR ? L"\"" + value.Text() + L"\"" : value.Text();
}

HRESULT Refuse(const support::Error& refusal, EXCEPINFO* exception) {
    if (exception != nullptr) {
        const long number = refusal.Number();
        exception->scode = number < 0 ? number : MAKE_SCODE(SEVERITY_ERROR, FACILITY_CONTROL, number);
        exception->bstrSource = SysAllocString(L"stand-in");
        exception->bstrDescription = SysAllocString(refusal.Description().c_str());
    }
    return DISP_E_EXCEPTION;
}

class Factory final : public IClassFactory {
  public:
    explicit Factory(std::function<ScriptedObject*()> make) : make_(std::move(make)) {}

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
        ScriptedObject* const made = make_();
        const HRESULT result = made->QueryInterface(id, object);
        made->Release();
        return result;
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  private:
    ~Factory() = default;

    std::function<ScriptedObject*()> make_;
    ULONG references_ = 1;
};

} // namespace

ScriptedObject::ScriptedObject(std::vector<std::wstring>& calls, std::wstring name)
    : calls_(calls), name_(std::move(name)) {
    automationObjects.Add(1);
}

ScriptedObject& ScriptedObject::Method(const wchar_t* name, std::size_t least, std::size_t most, Handler handler) {
    members_.push_back({name, DISPATCH_METHOD, least, most, std::move(handler)});
    return *this;
}

ScriptedObject& ScriptedObject::Get(const wchar_t* name, Handler handler) {
    members_.push_back({name, DISPATCH_PROPERTYGET, 0, 1, std::move(handler)});
    return *this;
}

ScriptedObject& ScriptedObject::Put(const wchar_t* name, Handler handler) {
    members_.push_back({name, DISPATCH_PROPERTYPUT, 1, 1, std::move(handler)});
    return *this;
}

ScriptedObject& ScriptedObject::Any(std::function<Variant(const std::wstring&)> handler) {
    any_ = std::move(handler);
    return *this;
}

STDMETHODIMP ScriptedObject::QueryInterface(REFIID id, void** object) {
    const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch);
    *object = known ? static_cast<IDispatch*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) ScriptedObject::Release() {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
}

STDMETHODIMP ScriptedObject::GetTypeInfoCount(UINT* count) {
    *count = 0;
    return S_OK;
}

STDMETHODIMP ScriptedObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
    bool known = count == 1 && any_ != nullptr;
    for (const Member& member : members_) known = known || lstrcmpiW(member.name.c_str(), names[0]) == 0;
    ids[0] = DISPID_UNKNOWN;
    if (!known) return DISP_E_UNKNOWNNAME;
    names_.emplace_back(names[0]);
    ids[0] = static_cast<DISPID>(names_.size());
    return S_OK;
}

STDMETHODIMP ScriptedObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                                    EXCEPINFO* exception, UINT*) {
    if (id < 1 || static_cast<std::size_t>(id) > names_.size()) return DISP_E_MEMBERNOTFOUND;
    const std::wstring& name = names_[static_cast<std::size_t>(id - 1)];
    Arguments arguments;
    for (UINT i = parameters->cArgs; i > 0; --i) {
        Variant argument;
        if (FAILED(VariantCopyInd(argument.Out(), &parameters->rgvarg[i - 1]))) return DISP_E_TYPEMISMATCH;
        arguments.push_back(std::move(argument));
    }
    while (!arguments.empty() && arguments.back().Type() == VT_ERROR) arguments.pop_back();
    const Member* called = nullptr;
    for (const Member& member : members_) {
        if ((member.kind & flags) != 0 && lstrcmpiW(member.name.c_str(), name.c_str()) == 0) called = &member;
    }
    if (called == nullptr && any_ == nullptr) return DISP_E_MEMBERNOTFOUND;
    if (called != nullptr && (arguments.size() < called->least || arguments.size() > called->most)) {
        return DISP_E_BADPARAMCOUNT;
    }
    const std::wstring call = name_ + L"." + name;
    try {
        Note(call, (flags & DISPATCH_PROPERTYPUT) != 0, arguments);
        const Handler handler = called == nullptr ? Handler() : called->handler; // the object may go meanwhile
        const Variant answer = handler ? handler(arguments) : any_(call);
        return result == nullptr ? S_OK : VariantCopy(result, const_cast<VARIANT*>(&answer.Get()));
    } catch (const support::Error& refusal) {
        return Refuse(refusal, exception);
    }
}

void ScriptedObject::Note(const std::wstring& call, bool put, const Arguments& arguments) {
    if (name_.empty()) return;
    std::wstring list;
    for (const Variant& argument : arguments) {
        if (argument.Type() != VT_DISPATCH) list += (list.empty() ? L"" : L", ") + Shown(argument);
    }
    calls_.push_back(put ? call + L" = " + list : call + L"(" + list + L")");
}

Variant Returned(ScriptedObject* object) {
    Variant value(static_cast<IDispatch*>(object));
    object->Release();
    return value;
}

ProgramStandIn::ProgramStandIn(const wchar_t* progId, const wchar_t* classId, std::function<ScriptedObject*()> make)
    : key_(std::wstring(L"Software\\Classes\\") + progId) {
    CLSID id{};
    if (FAILED(CLSIDFromProgID(progId, &id)) && classId != nullptr) {
        SetClass(classId);
        EXPECT_EQ(CLSIDFromString(classId, &id), S_OK);
    }
    auto* const factory = new Factory(std::move(make));
    EXPECT_EQ(CoRegisterClassObject(id, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_), S_OK)
        << "no class object for " << support::ToUtf8(progId);
    factory->Release();
}

void ProgramStandIn::SetClass(const std::wstring& classId) {
    const auto bytes = static_cast<DWORD>((classId.size() + 1) * sizeof(wchar_t));
    EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, (key_ + L"\\CLSID").c_str(), nullptr, REG_SZ, classId.c_str(), bytes),
              ERROR_SUCCESS);
    registered_ = true;
}

ProgramStandIn::~ProgramStandIn() {
    CoRevokeClassObject(cookie_);
    if (registered_) RegDeleteTreeW(HKEY_LOCAL_MACHINE, key_.c_str());
}

} // namespace quorvex::testing
