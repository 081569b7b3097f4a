#include "support/automation_object_win.h"

#include <cstring>
#include <new>

namespace quorvex::support {
namespace {

// Numbers and texts are converted by the rules of the invariant locale: a point, no grouping by the user's taste.
Variant Converted(const VARIANT& value, VARTYPE type) {
    Variant result;
    if (FAILED(VariantChangeTypeEx(result.Out(), const_cast<VARIANT*>(&value), LOCALE_INVARIANT, VARIANT_ALPHABOOL,
                                   type))) {
        throw Error(kErrorTypeMismatch, L"Type mismatch");
    }
    return result;
}

} // namespace

Variant::Variant(const std::wstring& text) : Variant() {
    value_.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (value_.bstrVal == nullptr) throw std::bad_alloc();
    value_.vt = VT_BSTR;
}

Variant::Variant(std::int32_t number) noexcept : Variant() {
    value_.vt = VT_I4;
    value_.lVal = number;
}

Variant::Variant(double number) noexcept : Variant() {
    value_.vt = VT_R8;
    value_.dblVal = number;
}

Variant::Variant(bool value) noexcept : Variant() {
    value_.vt = VT_BOOL;
    value_.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
}

Variant::Variant(IDispatch* object) noexcept : Variant() {
    value_.vt = VT_DISPATCH;
    value_.pdispVal = object;
    if (object != nullptr) object->AddRef();
}

Variant::Variant(const std::vector<std::uint8_t>& bytes) : Variant() {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (array == nullptr) throw std::bad_alloc();
    value_.vt = VT_ARRAY | VT_UI1;
    value_.parray = array;
    void* data = nullptr;
    if (!bytes.empty() && SUCCEEDED(SafeArrayAccessData(array, &data))) {
        std::memcpy(data, bytes.data(), bytes.size());
        SafeArrayUnaccessData(array);
    }
}

Variant::Variant(const Variant& other) : Variant() {
    if (FAILED(VariantCopy(&value_, const_cast<VARIANT*>(&other.value_)))) throw std::bad_alloc();
}

Variant::Variant(Variant&& other) noexcept : value_(other.value_) {
    VariantInit(&other.value_);
}

Variant& Variant::operator=(Variant other) noexcept {
    std::swap(value_, other.value_);
    return *this;
}

Variant Variant::Null() noexcept {
    Variant null;
    null.value_.vt = VT_NULL;
    return null;
}

Variant Variant::Missing() noexcept {
    Variant missing;
    missing.value_.vt = VT_ERROR;
    missing.value_.scode = DISP_E_PARAMNOTFOUND;
    return missing;
}

VARIANT* Variant::Out() {
    VariantClear(&value_);
    return &value_;
}

std::wstring Variant::Text() const {
    if (value_.vt == VT_BSTR) {
        return value_.bstrVal == nullptr ? std::wstring() : std::wstring(value_.bstrVal, SysStringLen(value_.bstrVal));
    }
    return Converted(value_, VT_BSTR).Text();
}

std::int32_t Variant::Int() const {
    return value_.vt == VT_I4 ? value_.lVal : Converted(value_, VT_I4).Get().lVal;
}

double Variant::Number() const {
    return value_.vt == VT_R8 ? value_.dblVal : Converted(value_, VT_R8).Get().dblVal;
}

bool Variant::Bool() const {
    return (value_.vt == VT_BOOL ? value_.boolVal : Converted(value_, VT_BOOL).Get().boolVal) != VARIANT_FALSE;
}

std::vector<std::uint8_t> Variant::Bytes() const {
    long low = 0;
    long high = -1;
    void* data = nullptr;
    if (value_.vt != (VT_ARRAY | VT_UI1) || SafeArrayGetDim(value_.parray) != 1 ||
        FAILED(SafeArrayGetLBound(value_.parray, 1, &low)) || FAILED(SafeArrayGetUBound(value_.parray, 1, &high)) ||
        FAILED(SafeArrayAccessData(value_.parray, &data))) {
        throw Error(kErrorTypeMismatch, L"Type mismatch");
    }
    const auto* const first = static_cast<const std::uint8_t*>(data);
    std::vector<std::uint8_t> bytes(first, first + (high - low + 1));
    SafeArrayUnaccessData(value_.parray);
    return bytes;
}

} // namespace quorvex::support
