#include "support/automation_object_win.h"

#include <algorithm>
#include <array>
#include <objbase.h>

namespace quorvex::support {
namespace {

// Frees the texts of an EXCEPINFO.
class ExceptionInfo {
  public:
    ExceptionInfo() = default;
    ExceptionInfo(const ExceptionInfo&) = delete;
    ExceptionInfo& operator=(const ExceptionInfo&) = delete;
    ~ExceptionInfo() {
        SysFreeString(info_.bstrSource);
        SysFreeString(info_.bstrDescription);
        SysFreeString(info_.bstrHelpFile);
    }

    EXCEPINFO* Out() { return &info_; }

    // An object may put off filling in the details until somebody asks.
    Error ToError(HRESULT result) {
        if (info_.pfnDeferredFillIn != nullptr) info_.pfnDeferredFillIn(&info_);
        const HRESULT code = info_.scode != 0 ? info_.scode : result;
        const long number = info_.wCode != 0 ? info_.wCode : ErrorNumberOf(code);
        if (SysStringLen(info_.bstrDescription) == 0) return Error(number, DescriptionOf(code));
        return Error(number, std::wstring(info_.bstrDescription, SysStringLen(info_.bstrDescription)));
    }

  private:
    EXCEPINFO info_{};
};

} // namespace

long ErrorNumberOf(HRESULT result) {
    switch (result) {
    case DISP_E_TYPEMISMATCH:
        return kErrorTypeMismatch;
    case DISP_E_OVERFLOW:
        return kErrorOverflow;
    case DISP_E_UNKNOWNNAME:
    case DISP_E_MEMBERNOTFOUND:
        return kErrorNoSuchMember;
    default:
        return HRESULT_FACILITY(result) == FACILITY_CONTROL ? HRESULT_CODE(result) : result;
    }
}

std::wstring DescriptionOf(HRESULT result) {
    std::array<wchar_t, 512> text{};
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                  static_cast<DWORD>(result), 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    while (length > 0 && text[length - 1] <= L' ') --length;
    if (length > 0) return std::wstring(text.data(), length);
    std::wstring number = L"Automation error ";
    for (int shift = 28; shift >= 0; shift -= 4) {
        number += L"0123456789ABCDEF"[(static_cast<std::uint32_t>(result) >> shift) & 0xF];
    }
    return number;
}

AutomationObject::AutomationObject(IDispatch* object) noexcept : object_(object) {
    if (object_ != nullptr) object_->AddRef();
}

AutomationObject& AutomationObject::operator=(AutomationObject other) noexcept {
    std::swap(object_, other.object_);
    return *this;
}

AutomationObject::~AutomationObject() {
    if (object_ != nullptr) object_->Release();
}

AutomationObject AutomationObject::Create(const std::wstring& progId) {
    CLSID classId{};
    HRESULT result = CLSIDFromProgID(progId.c_str(), &classId);
    void* object = nullptr;
    if (SUCCEEDED(result)) {
        result = CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, IID_IDispatch, &object);
    }
    if (FAILED(result) || object == nullptr) {
        throw Error(kErrorCannotCreateObject, L"Cannot create object " + progId + L": " + DescriptionOf(result));
    }
    AutomationObject created;
    created.object_ = static_cast<IDispatch*>(object);
    return created;
}

AutomationObject AutomationObject::From(const Variant& value) {
    const VARIANT& held = value.Get();
    if (held.vt == VT_DISPATCH && held.pdispVal != nullptr) return AutomationObject(held.pdispVal);
    void* object = nullptr;
    if (held.vt == VT_UNKNOWN && held.punkVal != nullptr &&
        SUCCEEDED(held.punkVal->QueryInterface(IID_IDispatch, &object))) {
        AutomationObject found;
        found.object_ = static_cast<IDispatch*>(object);
        return found;
    }
    throw Error(kErrorObjectRequired, L"Object required");
}

bool AutomationObject::HasMember(const wchar_t* name) const {
    std::wstring text(name);
    wchar_t* names = text.data();
    DISPID id = DISPID_UNKNOWN;
    return object_ != nullptr && SUCCEEDED(object_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id));
}

DISPID AutomationObject::IdOf(const wchar_t* name) const {
    if (object_ == nullptr) throw Error(kErrorObjectRequired, L"Object required");
    std::wstring text(name);
    wchar_t* names = text.data();
    DISPID id = DISPID_UNKNOWN;
    const HRESULT result = object_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(result)) throw Error(ErrorNumberOf(result), text + L": " + DescriptionOf(result));
    return id;
}

Variant AutomationObject::Invoke(const wchar_t* name, WORD kind, std::initializer_list<Variant> arguments) const {
    const DISPID id = IdOf(name);
    // The object sees borrowed copies, last argument first.
    std::vector<VARIANT> borrowed;
    borrowed.reserve(arguments.size());
    for (const Variant& argument : arguments) borrowed.push_back(argument.Get());
    std::reverse(borrowed.begin(), borrowed.end());

    const bool put = (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    DISPID putId = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{borrowed.data(), put ? &putId : nullptr, static_cast<UINT>(borrowed.size()), put ? 1U : 0U};
    Variant answer;
    ExceptionInfo exception;
    UINT badArgument = 0;
    const HRESULT result = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters,
                                           put ? nullptr : answer.Out(), exception.Out(), &badArgument);
    if (result == DISP_E_EXCEPTION) throw exception.ToError(result);
    if (FAILED(result)) throw Error(ErrorNumberOf(result), std::wstring(name) + L": " + DescriptionOf(result));
    return answer;
}

Variant AutomationObject::Call(const wchar_t* method, std::initializer_list<Variant> arguments) const {
    return Invoke(method, DISPATCH_METHOD, arguments);
}

Variant AutomationObject::Property(const wchar_t* name, std::initializer_list<Variant> arguments) const {
    return Invoke(name, DISPATCH_PROPERTYGET, arguments);
}

// A collection's Item is a method in some object models and a property in others; hosts ask for both at once.
AutomationObject AutomationObject::Object(const wchar_t* name, std::initializer_list<Variant> arguments) const {
    return From(Invoke(name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments));
}

void AutomationObject::Put(const wchar_t* name, const Variant& value) const {
    Invoke(name, value.Type() == VT_DISPATCH ? DISPATCH_PROPERTYPUTREF : DISPATCH_PROPERTYPUT, {value});
}

} // namespace quorvex::support
