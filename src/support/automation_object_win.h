#pragma once

#include "support/error.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>
#include <windows.h>

#include <oaidl.h>

namespace quorvex::support {

// A VARIANT that owns its contents.
class Variant {
  public:
    Variant() noexcept { VariantInit(&value_); }
    Variant(const wchar_t* text) : Variant(std::wstring(text)) {}
    Variant(const std::wstring& text);
    Variant(std::int32_t number) noexcept;
    Variant(double number) noexcept;
    Variant(bool value) noexcept;
    Variant(IDispatch* object) noexcept; // takes a reference of its own
    // An array of bytes (VT_ARRAY | VT_UI1).
    Variant(const std::vector<std::uint8_t>& bytes);
    Variant(const Variant& other);
    Variant(Variant&& other) noexcept;
    Variant& operator=(Variant other) noexcept;
    ~Variant() { VariantClear(&value_); }

    static Variant Null() noexcept;
    // An optional argument that is left out in the middle of a call.
    static Variant Missing() noexcept;

    const VARIANT& Get() const { return value_; }
    VARTYPE Type() const { return value_.vt; }
    // NULL and empty alike.
    bool IsNull() const { return value_.vt == VT_NULL || value_.vt == VT_EMPTY; }
    // For a call that fills it in; drops the contents first.
    VARIANT* Out();

    // Converted, whatever the user's locale. Throw Error (type mismatch) when the value has no such form.
    std::wstring Text() const;
    std::int32_t Int() const;
    double Number() const;
    bool Bool() const;
    std::vector<std::uint8_t> Bytes() const;

  private:
    VARIANT value_;
};

// An automation object reached by the names of its members. Every call throws Error: with the number and description
// that the object gave, or with those of the failed call. Numbers are those that Visual Basic hosts see: the low word
// of a "control" code such as 800A0E78 (3704), any other code whole.
class AutomationObject {
  public:
    AutomationObject() = default;
    // Takes a reference of its own.
    explicit AutomationObject(IDispatch* object) noexcept;
    AutomationObject(const AutomationObject& other) noexcept : AutomationObject(other.object_) {}
    AutomationObject(AutomationObject&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    AutomationObject& operator=(AutomationObject other) noexcept;
    ~AutomationObject();

    // A new object of a registered class ("ADODB.Connection").
    static AutomationObject Create(const std::wstring& progId);
    // The object that a value holds; throws Error (object required) when it holds none.
    static AutomationObject From(const Variant& value);

    explicit operator bool() const { return object_ != nullptr; }
    IDispatch* Get() const { return object_; }
    bool HasMember(const wchar_t* name) const;

    // Arguments in the order in which they are written. Member names are case-blind in most objects.
    Variant Call(const wchar_t* method, std::initializer_list<Variant> arguments = {}) const;
    Variant Property(const wchar_t* name, std::initializer_list<Variant> arguments = {}) const;
    // A property whose value is an object.
    AutomationObject Object(const wchar_t* name, std::initializer_list<Variant> arguments = {}) const;
    void Put(const wchar_t* name, const Variant& value) const;

  private:
    DISPID IdOf(const wchar_t* name) const;
    Variant Invoke(const wchar_t* name, WORD kind, std::initializer_list<Variant> arguments) const;

    IDispatch* object_ = nullptr;
};

inline constexpr long kErrorCannotCreateObject = 429;
inline constexpr long kErrorObjectRequired = 424;
inline constexpr long kErrorNoSuchMember = 438;

// The number that a host sees for a failed call.
long ErrorNumberOf(HRESULT result);
// The system's words for it, without the line end.
std::wstring DescriptionOf(HRESULT result);

} // namespace quorvex::support
