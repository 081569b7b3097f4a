#include "server/quorvex_object_win.h"

namespace quorvex::server {

#define QUORVEX_PROPERTY(type, name, toHost, fromHost)                                                                 \
    HRESULT QuorvexObject::get_##name(type* value) {                                                                   \
        if (value == nullptr) return E_POINTER;                                                                        \
        *value = {};                                                                                                   \
        return Guard([&] { *value = toHost(lookup_.name); });                                                          \
    }                                                                                                                  \
    HRESULT QuorvexObject::put_##name(type value) {                                                                    \
        return Guard([&] { lookup_.name = fromHost(value); });                                                         \
    }
#define QUORVEX_TEXT(number, name, help) QUORVEX_PROPERTY(BSTR, name, NewText, Text)
#define QUORVEX_BOOLEAN(number, name, help) QUORVEX_PROPERTY(VARIANT_BOOL, name, Boolean, 0 !=)
#define QUORVEX_LONG(number, name, help) QUORVEX_PROPERTY(long, name, static_cast<long>, static_cast<std::int32_t>)
#define QUORVEX_SHORT(number, name, help) QUORVEX_PROPERTY(short, name, static_cast<short>, static_cast<std::int16_t>)

#include "server/quorvex_properties.inc"

#undef QUORVEX_TEXT
#undef QUORVEX_BOOLEAN
#undef QUORVEX_LONG
#undef QUORVEX_SHORT
#undef QUORVEX_PROPERTY

} // namespace quorvex::server
