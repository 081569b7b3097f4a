#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <utility>
#include <vector>

namespace quorvex::testing {

// A text as early-bound hosts pass it: BSTR by value, BSTR* by reference.
class Text {
  public:
    Text() = default;
    Text(const wchar_t* text) : value_(SysAllocString(text)) {}
    explicit Text(const std::wstring& text) : value_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
    ~Text() { SysFreeString(value_); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;

    operator BSTR() const { return value_; }
    // For a by-reference argument: keeps the text.
    BSTR* Ref() { return &value_; }
    // For a result: drops the text.
    BSTR* Out() {
        SysFreeString(std::exchange(value_, nullptr));
        return &value_;
    }
    std::wstring Str() const { return value_ == nullptr ? std::wstring() : std::wstring(value_, SysStringLen(value_)); }

  private:
    BSTR value_ = nullptr;
};

// A VARIANT that owns what it holds.
class Value : public VARIANT {
  public:
    Value() : VARIANT{} {}
    Value(const wchar_t* text) : VARIANT{} {
        vt = VT_BSTR;
        bstrVal = SysAllocString(text);
    }
    explicit Value(const std::wstring& text) : VARIANT{} {
        vt = VT_BSTR;
        bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    }
    Value(long number) : VARIANT{} {
        vt = VT_I4;
        lVal = number;
    }
    Value(double number) : VARIANT{} {
        vt = VT_R8;
        dblVal = number;
    }
    Value(bool truth) : VARIANT{} {
        vt = VT_BOOL;
        boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
    }
    Value(const Value& other) : VARIANT{} { VariantCopy(this, const_cast<Value*>(&other)); }
    Value& operator=(const Value& other) {
        VariantCopy(this, const_cast<Value*>(&other)); // the header asks for a plain pointer
        return *this;
    }
    ~Value() { VariantClear(this); }

    // A variable passed by reference, as script hosts do. The variable must live longer.
    static Value Ref(VARIANT& variable) { return Borrowed(VT_BYREF | VT_VARIANT, &variable); }
    // A typed variable passed by reference, as compiled hosts do.
    static Value Borrowed(int type, void* target) {
        Value value;
        value.vt = static_cast<VARTYPE>(type);
        value.byref = target;
        return value;
    }
    static Value Missing() {
        Value value;
        value.vt = VT_ERROR;
        value.scode = DISP_E_PARAMNOTFOUND;
        return value;
    }
    static Value OfType(VARTYPE type) {
        Value value;
        value.vt = type;
        return value;
    }

    std::wstring Str() const {
        return vt == VT_BSTR && bstrVal != nullptr ? std::wstring(bstrVal, SysStringLen(bstrVal)) : L"";
    }
};

// What a late-bound call came to.
struct Outcome {
    HRESULT hr = E_FAIL;
    Value result;
    UINT badArgument = 99;
};

using Named = std::pair<const wchar_t*, Value>;

// Calls by name as script hosts do: value-wanting calls carry both flags.
inline Outcome Call(IDispatch* object, const wchar_t* name, const std::vector<Value>& positional,
                    const std::vector<Named>& named = {}, WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET) {
    Outcome outcome;
    std::vector<LPOLESTR> names = {const_cast<LPOLESTR>(name)};
    for (const Named& argument : named) names.push_back(const_cast<LPOLESTR>(argument.first));
    std::vector<DISPID> ids(names.size());
    outcome.hr =
        object->GetIDsOfNames(IID_NULL, names.data(), static_cast<UINT>(names.size()), LOCALE_USER_DEFAULT, ids.data());
    if (FAILED(outcome.hr)) return outcome;
    std::vector<VARIANT> arguments; // borrowed: named ones first, positional ones backwards
    for (const Named& argument : named) arguments.push_back(argument.second);
    for (std::size_t i = positional.size(); i > 0; --i) arguments.push_back(positional[i - 1]);
    DISPPARAMS params{arguments.data(), named.empty() ? nullptr : ids.data() + 1, static_cast<UINT>(arguments.size()),
                      static_cast<UINT>(named.size())};
    outcome.hr = object->Invoke(ids[0], IID_NULL, LOCALE_USER_DEFAULT, flags, &params, &outcome.result, nullptr,
                                &outcome.badArgument);
    return outcome;
}

inline Outcome Get(IDispatch* object, const wchar_t* name) {
    return Call(object, name, {}, {}, DISPATCH_PROPERTYGET);
}

inline HRESULT Put(IDispatch* object, const wchar_t* name, const Value& value) {
    LPOLESTR names = const_cast<LPOLESTR>(name);
    DISPID id = 0;
    const HRESULT hr = object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(hr)) return hr;
    DISPID put = DISPID_PROPERTYPUT;
    VARIANT argument = value;
    DISPPARAMS params{&argument, &put, 1, 1};
    return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &params, nullptr, nullptr, nullptr);
}

} // namespace quorvex::testing
