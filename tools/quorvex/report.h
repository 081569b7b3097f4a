#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace quorvex::cli {

// How a command ended; the values are the program's exit codes.
enum class Outcome { Done = 0, Nothing = 1, WrongCall = 2, Failed = 3 };

using Cell = std::variant<std::wstring, double, std::int64_t, bool>;

// What a command found, in the one shape that all commands print.
class Report {
  public:
    // A tall report prints one "name TAB value" line for each column, the others one line for each row.
    enum class Layout { Wide, Tall };

    explicit Report(std::string command, std::vector<std::string> columns = {}, Layout layout = Layout::Wide)
        : command_(std::move(command)), columns_(std::move(columns)), layout_(layout) {}

    // As many cells as there are columns.
    void Add(std::vector<Cell> row) { rows_.push_back(std::move(row)); }
    // The message says why there is nothing, or what went wrong.
    void End(Outcome outcome, std::wstring message = {}) {
        outcome_ = outcome;
        message_ = std::move(message);
    }

    Outcome Result() const { return outcome_; }
    const std::wstring& Message() const { return message_; }
    const std::vector<std::vector<Cell>>& Rows() const { return rows_; }

    // UTF-8. Text: tab-separated lines, without the message. JSON: one object with "command", "outcome", "message" and
    // "rows", an object for each row.
    std::string Text() const;
    std::string Json() const;

  private:
    std::string command_;
    std::vector<std::string> columns_;
    Layout layout_;
    std::vector<std::vector<Cell>> rows_;
    Outcome outcome_ = Outcome::Done;
    std::wstring message_;
};

} // namespace quorvex::cli
