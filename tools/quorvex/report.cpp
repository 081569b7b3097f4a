#include "quorvex/report.h"

#include "support/text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <type_traits>

namespace quorvex::cli {
namespace {

using OrderedJson = nlohmann::ordered_json;

constexpr std::array<const char*, 4> kOutcomeNames = {"done", "nothing", "wrong call", "failed"};

// A line stays a line, a column a column.
std::string TextOf(const Cell& cell) {
    return std::visit(
        [](const auto& value) -> std::string {
            using Type = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<Type, std::wstring>) {
                std::string text = support::ToUtf8(value);
                std::replace_if(
                    text.begin(), text.end(), [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
                return text;
            } else if constexpr (std::is_same_v<Type, bool>) {
                return value ? "yes" : "no";
            } else {
                return support::ToUtf8(support::NumberText(static_cast<double>(value)));
            }
        },
        cell);
}

OrderedJson JsonOf(const Cell& cell) {
    return std::visit(
        [](const auto& value) -> OrderedJson {
            if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::wstring>)
                return support::ToUtf8(value);
            else
                return value;
        },
        cell);
}

} // namespace

std::string Report::Text() const {
    std::string text;
    for (const std::vector<Cell>& row : rows_) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (layout_ == Layout::Tall) text += columns_[i] + "\t";
            text += TextOf(row[i]);
            text += layout_ == Layout::Tall || i + 1 == row.size() ? '\n' : '\t';
        }
    }
    return text;
}

std::string Report::Json() const {
    OrderedJson report = {{"command", command_},
                          {"outcome", kOutcomeNames[static_cast<std::size_t>(outcome_)]},
                          {"message", support::ToUtf8(message_)},
                          {"rows", OrderedJson::array()}};
    for (const std::vector<Cell>& row : rows_) {
        OrderedJson object = OrderedJson::object();
        for (std::size_t i = 0; i < row.size(); ++i) object[columns_[i]] = JsonOf(row[i]);
        report["rows"].push_back(std::move(object));
    }
    return report.dump(2, ' ', false, OrderedJson::error_handler_t::replace) + "\n";
}

} // namespace quorvex::cli
