#include "database/ado/value_win.h"

#include <cmath>
#include <limits>

namespace quorvex::database::ado {
namespace {

using support::Variant;

Value Narrowed(double number) {
    constexpr double kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr double kHighest = std::numeric_limits<std::int32_t>::max();
    if (number >= kLowest && number <= kHighest) return static_cast<std::int32_t>(number);
    return number;
}

struct ToVariantOf {
    Variant operator()(std::monostate) const { return Variant::Null(); }
    template <typename T>
    Variant operator()(const T& value) const {
        return Variant(value);
    }
};

} // namespace

Value FromVariant(const Variant& value) {
    switch (value.Type()) {
    case VT_EMPTY:
    case VT_NULL:
        return std::monostate();
    case VT_BOOL:
        return value.Bool();
    case VT_BSTR:
        return value.Text();
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_INT:
        return value.Int();
    case VT_UI4:
    case VT_UINT:
    case VT_I8:
    case VT_UI8:
        return Narrowed(value.Number());
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
    case VT_DECIMAL:
        return value.Number();
    default:
        return value.Bytes();
    }
}

Variant ToVariant(const Value& value) {
    return std::visit(ToVariantOf{}, value);
}

} // namespace quorvex::database::ado
