#pragma once

#include "database/database.h"
#include "support/automation_object_win.h"

namespace quorvex::database::ado {

// A field's VARIANT as a column value: NULL and empty alike, whole numbers of any width that fit in 32 bits, wider
// numbers, currency, decimals and dates (in days, as automation counts them) as a number. Throws support::Error for any
// other type.
Value FromVariant(const support::Variant& value);
support::Variant ToVariant(const Value& value);

} // namespace quorvex::database::ado
