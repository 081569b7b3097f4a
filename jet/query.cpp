#include "jet/query.h"

#include "format/table_def.h"
#include "format/text_codec.h"
#include "jet/error.h"

#include <charconv>
#include <optional>

namespace jet {
namespace {

constexpr int kMaxDepth = 64;

struct Token {
    enum Kind { kEnd, kName, kText, kNumber, kSymbol };
    Kind kind = kEnd;
    std::size_t position = 0;
    std::u16string text; ///< name, text, or the symbol
    bool bracketed = false;
    double number = 0;
};

bool IsDigit(char16_t c) {
    return c >= u'0' && c <= u'9';
}
bool IsNameStart(char16_t c) {
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || c == u'_' || c >= 0x80;
}
bool IsBlank(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

[[noreturn]] void Fail(const std::string& what, std::size_t position) {
    throw Error(ErrorCode::kQuerySyntax,
                "Syntax error in the query: " + what + " at position " + std::to_string(position + 1));
}

std::string Quoted(const std::string& text) {
    std::string out(1, '"');
    out.append(text).push_back('"');
    return out;
}

class Lexer {
  public:
    explicit Lexer(std::u16string_view text) : text_(text) {}

    Token Next() {
        while (at_ < text_.size() && IsBlank(text_[at_])) ++at_;
        Token token;
        token.position = at_;
        if (at_ == text_.size()) return token;
        const char16_t c = text_[at_];
        if (c == u'[') {
            Bracketed(token);
        } else if (c == u'\'') {
            Text(token);
        } else if (IsNameStart(c)) {
            token.kind = Token::kName;
            while (at_ < text_.size() && (IsNameStart(text_[at_]) || IsDigit(text_[at_]))) ++at_;
            token.text = text_.substr(token.position, at_ - token.position);
        } else if (IsNumberStart()) {
            Number(token);
        } else {
            Symbol(token);
        }
        return token;
    }

  private:
    bool IsNumberStart() const {
        std::size_t i = at_;
        if (text_[i] == u'+' || text_[i] == u'-') ++i;
        if (i < text_.size() && text_[i] == u'.') ++i;
        return i < text_.size() && IsDigit(text_[i]);
    }

    void Bracketed(Token& token) {
        const std::size_t end = text_.find(u']', at_);
        if (end == std::u16string_view::npos) Fail("a bracket is not closed", token.position);
        token.kind = Token::kName;
        token.bracketed = true;
        token.text = text_.substr(at_ + 1, end - at_ - 1);
        if (token.text.empty()) Fail("an empty name", token.position);
        at_ = end + 1;
    }

    /// Inside the text a quote is doubled; a single one ends it.
    void Text(Token& token) {
        token.kind = Token::kText;
        for (;;) {
            const std::size_t start = at_ + 1;
            at_ = text_.find(u'\'', start);
            if (at_ == std::u16string_view::npos) Fail("a text is not closed", token.position);
            token.text += text_.substr(start, at_ - start);
            if (!text_.substr(++at_).starts_with(u'\'')) return;
            token.text += u'\'';
        }
    }

    void Number(Token& token) {
        std::string digits;
        if (text_[at_] == u'+') ++at_;
        while (at_ < text_.size()) {
            const char16_t c = text_[at_];
            const bool sign =
                (c == u'-' || c == u'+') && (digits.empty() || digits.back() == 'e' || digits.back() == 'E');
            if (!IsDigit(c) && c != u'.' && c != u'e' && c != u'E' && !sign) break;
            digits += static_cast<char>(c);
            ++at_;
        }
        token.kind = Token::kNumber;
        const char* const end = digits.data() + digits.size();
        const auto [stop, error] = std::from_chars(digits.data(), end, token.number);
        if (error != std::errc() || stop != end) Fail(Quoted(digits) + " is not a number", token.position);
        if (at_ < text_.size() && IsNameStart(text_[at_])) Fail("a number runs into a name", at_);
    }

    void Symbol(Token& token) {
        token.kind = Token::kSymbol;
        const std::u16string_view two = text_.substr(at_, 2);
        const bool pair = two == u"<=" || two == u">=" || two == u"<>";
        token.text = text_.substr(at_, pair ? 2 : 1);
        at_ += token.text.size();
    }

    std::u16string_view text_;
    std::size_t at_ = 0;
};

class Parser {
  public:
    explicit Parser(std::u16string_view text) : lexer_(text) { Advance(); }

    Query ParseSelect() {
        Query query;
        Keyword(u"SELECT");
        std::u16string star;
        std::size_t starPosition = token_.position;
        if (!IsSymbol(u"*")) {
            star = Name();
            Symbol(u".");
            if (!IsSymbol(u"*")) Unexpected();
        }
        Advance();
        Keyword(u"FROM");
        query.table = Name();
        if (!star.empty() && !SameName(star, query.table)) Fail("another table is named", starPosition);
        if (IsKeyword(u"WHERE")) {
            Advance();
            Conditions(0);
        }
        if (IsSymbol(u";")) Advance();
        if (token_.kind != Token::kEnd) Unexpected();
        query.conditions = std::move(conditions_);
        return query;
    }

    std::vector<Condition> ParseAlone() {
        Conditions(0);
        if (token_.kind != Token::kEnd) Unexpected();
        return std::move(conditions_);
    }

  private:
    struct ColumnName {
        std::u16string table;
        std::u16string column;
    };

    void Advance() { token_ = lexer_.Next(); }
    bool IsSymbol(std::u16string_view symbol) const { return token_.kind == Token::kSymbol && token_.text == symbol; }
    bool IsKeyword(std::u16string_view word) const {
        return token_.kind == Token::kName && !token_.bracketed && SameName(token_.text, word);
    }
    void Symbol(std::u16string_view symbol) {
        if (!IsSymbol(symbol)) Unexpected();
        Advance();
    }
    void Keyword(std::u16string_view word) {
        if (!IsKeyword(word)) Unexpected();
        Advance();
    }
    [[noreturn]] void Unexpected() const {
        if (token_.kind == Token::kEnd) Fail("the query ends too early", token_.position);
        if (token_.kind == Token::kNumber) Fail("a number is not expected", token_.position);
        Fail(Quoted(ToUtf8(token_.text)) + " is not expected", token_.position);
    }
    std::u16string Name() {
        if (token_.kind != Token::kName) Unexpected();
        std::u16string name = std::move(token_.text);
        Advance();
        return name;
    }

    /// Comparisons joined by AND.
    void Conditions(int depth) {
        Term(depth);
        while (IsKeyword(u"AND")) {
            Advance();
            Term(depth);
        }
    }

    void Term(int depth) {
        if (auto column = Primary(depth)) Comparison(std::move(*column));
    }

    /// Parentheses hold a column's name or whole conditions; which of them shows only at the end.
    std::optional<ColumnName> Primary(int depth) {
        if (depth > kMaxDepth) Fail("too many parentheses", token_.position);
        if (!IsSymbol(u"(")) return Column();
        Advance();
        auto column = Primary(depth + 1);
        if (column && !IsSymbol(u")")) {
            Comparison(std::move(*column));
            column.reset();
        }
        if (!column) {
            while (IsKeyword(u"AND")) {
                Advance();
                Term(depth + 1);
            }
        }
        Symbol(u")");
        return column;
    }

    ColumnName Column() {
        ColumnName name;
        name.column = Name();
        if (IsSymbol(u".")) {
            Advance();
            name.table = std::move(name.column);
            name.column = Name();
        }
        return name;
    }

    void Comparison(ColumnName name) {
        static constexpr std::u16string_view kSymbols[] = {u"=", u"<>", u"<", u"<=", u">", u">="};
        Condition condition;
        condition.table = std::move(name.table);
        condition.column = std::move(name.column);
        std::size_t op = 0;
        while (op < std::size(kSymbols) && !IsSymbol(kSymbols[op])) ++op;
        if (op == std::size(kSymbols)) Unexpected();
        condition.op = static_cast<CompareOp>(op);
        Advance();
        if (token_.kind == Token::kText) {
            condition.literal = std::move(token_.text);
        } else if (token_.kind == Token::kNumber) {
            condition.literal = token_.number;
        } else {
            Unexpected();
        }
        Advance();
        conditions_.push_back(std::move(condition));
    }

    Lexer lexer_;
    Token token_;
    std::vector<Condition> conditions_;
};

} // namespace

Query ParseQuery(std::u16string_view text) {
    return Parser(text).ParseSelect();
}

std::vector<Condition> ParseConditions(std::u16string_view text) {
    return Parser(text).ParseAlone();
}

} // namespace jet
