#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace jet {

enum class CompareOp { kEqual, kNotEqual, kLess, kLessEqual, kGreater, kGreaterEqual };

/// One comparison of a column with a literal.
struct Condition {
    std::u16string table; ///< the name before the point; empty when there was none
    std::u16string column;
    CompareOp op = CompareOp::kEqual;
    std::variant<std::u16string, double> literal;
};

/// "SELECT * FROM table [WHERE ...]": every condition must hold.
struct Query {
    std::u16string table;
    std::vector<Condition> conditions;
};

/// Reads a query of the forms in use: one table, all columns, comparisons joined by AND with any parentheses.
/// Anything else throws kQuerySyntax with the place (counted from 1).
Query ParseQuery(std::u16string_view text);

/// Reads conditions alone, as in "[Name]='text'".
std::vector<Condition> ParseConditions(std::u16string_view text);

} // namespace jet
