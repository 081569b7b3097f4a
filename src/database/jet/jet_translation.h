#pragma once

#include "database/database.h"
#include "jet/error.h"
#include "jet/value.h"
#include "support/error.h"

#include <string>
#include <string_view>

namespace quorvex::database {

std::u16string ToUtf16(std::wstring_view text);
std::wstring FromUtf16(std::u16string_view text);

// A column's value in the database interface's terms. Money, decimals and dates (in days) become numbers.
Value FromJet(const jet::Value& value);
jet::Value ToJet(const Value& value);

// The engine's failure with the number under which data access reports its like. context names the file, may be empty.
support::Error FromJet(const jet::Error& error, const std::wstring& context);

// Runs engine calls, turning their failures into the component's.
template <typename Body>
auto Translated(const std::wstring& context, Body body) {
    try {
        return body();
    } catch (const jet::Error& error) {
        throw FromJet(error, context);
    }
}

} // namespace quorvex::database
