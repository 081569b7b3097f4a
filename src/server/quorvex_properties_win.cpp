#include "server/quorvex_object_win.h"

namespace quorvex::server {

// NOLINTBEGIN(bugprone-macro-parentheses): a type cannot be enclosed in parentheses
#define QUORVEX_PROPERTY(type, name)                                                                                   \
    HRESULT QuorvexObject::get_##name(type* value) {                                                                   \
        return Answer(value, [&] { return lookup_.name; });                                                            \
    }                                                                                                                  \
    HRESULT QuorvexObject::put_##name(type value) {                                                                    \
        return Guard([&] { Take(lookup_.name, value); });                                                              \
    }
// NOLINTEND(bugprone-macro-parentheses)
#define QUORVEX_TEXT(number, name, help) QUORVEX_PROPERTY(BSTR, name)
#define QUORVEX_BOOLEAN(number, name, help) QUORVEX_PROPERTY(VARIANT_BOOL, name)
#define QUORVEX_LONG(number, name, help) QUORVEX_PROPERTY(long, name)
#define QUORVEX_SHORT(number, name, help) QUORVEX_PROPERTY(short, name)

#include "server/quorvex_properties.inc"

#undef QUORVEX_TEXT
#undef QUORVEX_BOOLEAN
#undef QUORVEX_LONG
#undef QUORVEX_SHORT
#undef QUORVEX_PROPERTY

// What scripts do most, without the type library between: reading a property takes a quarter of the time.
std::optional<HRESULT> QuorvexObject::GetProperty(DISPID member, VARIANT* result) {
    VARIANT value{};
    HRESULT hr = S_OK;
    switch (member) {
#define QUORVEX_PROPERTY(number, name, kind, place)                                                                    \
    case number:                                                                                                       \
        value.vt = kind;                                                                                               \
        hr = get_##name(&value.place);                                                                                 \
        break;
#define QUORVEX_TEXT(number, name, help) QUORVEX_PROPERTY(number, name, VT_BSTR, bstrVal)
#define QUORVEX_BOOLEAN(number, name, help) QUORVEX_PROPERTY(number, name, VT_BOOL, boolVal)
#define QUORVEX_LONG(number, name, help) QUORVEX_PROPERTY(number, name, VT_I4, lVal)
#define QUORVEX_SHORT(number, name, help) QUORVEX_PROPERTY(number, name, VT_I2, iVal)
#include "server/quorvex_properties.inc"
#undef QUORVEX_TEXT
#undef QUORVEX_BOOLEAN
#undef QUORVEX_LONG
#undef QUORVEX_SHORT
#undef QUORVEX_PROPERTY
    default:
        return std::nullopt;
    }
    if (SUCCEEDED(hr)) *result = value;
    return hr;
}

} // namespace quorvex::server
