#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstdint>
#include <new>
#include <string>

namespace quorvex::server {

// A null BSTR is an empty text; embedded NULs stay.
inline std::wstring Text(BSTR value) {
    return value == nullptr ? std::wstring() : std::wstring(value, SysStringLen(value));
}

inline std::wstring Text(const BSTR* value) {
    return value == nullptr ? std::wstring() : Text(*value);
}

inline BSTR NewText(const std::wstring& text) {
    BSTR value = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (value == nullptr) throw std::bad_alloc();
    return value;
}

// Replaces a by-reference text of the caller.
inline void ReplaceText(BSTR* target, const std::wstring& text) {
    if (target == nullptr) return;
    BSTR value = NewText(text);
    SysFreeString(*target);
    *target = value;
}

inline VARIANT_BOOL Boolean(bool value) {
    return value ? VARIANT_TRUE : VARIANT_FALSE;
}

// Puts what a method answers into the caller's variable.
inline void Give(VARIANT_BOOL* result, bool answer) {
    *result = Boolean(answer);
}

inline void Give(BSTR* result, const std::wstring& answer) {
    *result = NewText(answer);
}

inline void Give(VARIANT* result, const std::wstring& answer) {
    result->bstrVal = NewText(answer);
    result->vt = VT_BSTR;
}

inline void Give(double* result, double answer) {
    *result = answer;
}

inline void Give(long* result, std::int32_t answer) {
    *result = answer;
}

inline void Give(short* result, std::int16_t answer) {
    *result = answer;
}

// Puts what a host assigns into a property.
inline void Take(std::wstring& property, BSTR value) {
    property = Text(value);
}

inline void Take(bool& property, VARIANT_BOOL value) {
    property = value != VARIANT_FALSE;
}

inline void Take(std::int32_t& property, long value) {
    property = value;
}

inline void Take(std::int16_t& property, short value) {
    property = value;
}

inline bool IsTrue(const VARIANT_BOOL* value) {
    return value != nullptr && *value != VARIANT_FALSE;
}

template <typename T, typename D>
T ValueOr(const T* value, D missing) {
    return value == nullptr ? static_cast<T>(missing) : *value;
}

} // namespace quorvex::server
