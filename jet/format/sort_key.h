#pragma once

#include "format/table_def.h"

#include <string_view>

namespace jet {

/// Bytes to set aside for a key.
inline constexpr std::size_t kUsualKey = 64;

/// Appends one index column's part of a key: flag byte, then the value.
/// Throws kUnsupported for text that cannot be indexed here, kTypeMismatch for a value of another type.
void AppendKey(Bytes& key, const Column& column, const Value& value, bool ascending);

/// Whether AppendKey can make a text's key exactly as the format's own engine would.
bool IsIndexableText(std::u16string_view text);
/// Whether a text column's order is the one this engine knows.
bool HasKnownOrder(const Column& column);

/// A byte string that orders text as the "General" sort order does: case-blind, trailing blanks ignored. Characters of
/// unknown weight come last, by code. For comparing; not for indexes.
Bytes CompareKey(std::u16string_view text);

} // namespace jet
