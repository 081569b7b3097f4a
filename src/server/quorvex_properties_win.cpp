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

} // namespace quorvex::server
