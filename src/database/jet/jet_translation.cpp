#include "database/jet/jet_translation.h"

#include "support/text.h"

#include <algorithm>
#include <cmath>

namespace quorvex::database {
namespace {

// OLE DB's numbers for what is not just a failure.
constexpr long kErrorInCommand = -2147217900;      // DB_E_ERRORSINCOMMAND
constexpr long kErrorNoTable = -2147217865;        // DB_E_NOTABLE
constexpr long kErrorDataType = -2147217913;       // DB_E_DATATYPEMISMATCH
constexpr long kErrorAuthentication = -2147217843; // DB_SEC_E_AUTH_FAILED
constexpr long kErrorIntegrity = -2147217873;      // DB_E_INTEGRITYVIOLATION
constexpr long kErrorNoItem = 3265;                // adErrItemNotFound

long NumberOf(jet::ErrorCode code) {
    switch (code) {
    case jet::ErrorCode::kQuerySyntax:
        return kErrorInCommand;
    case jet::ErrorCode::kNoSuchTable:
        return kErrorNoTable;
    case jet::ErrorCode::kNoSuchColumn:
        return kErrorNoItem;
    case jet::ErrorCode::kTypeMismatch:
        return kErrorDataType;
    case jet::ErrorCode::kWrongPassword:
        return kErrorAuthentication;
    case jet::ErrorCode::kDuplicateKey:
    case jet::ErrorCode::kNullKey:
        return kErrorIntegrity;
    case jet::ErrorCode::kDiskFull:
        return support::kErrorDiskFull;
    default:
        return support::kErrorDatabase;
    }
}

struct Converter {
    Value operator()(std::monostate) const { return std::monostate{}; }
    Value operator()(bool value) const { return value; }
    Value operator()(std::int32_t value) const { return value; }
    Value operator()(double value) const { return value; }
    Value operator()(jet::Currency value) const { return static_cast<double>(value.scaled) / 10000; }
    Value operator()(jet::DateTime value) const { return value.days; }
    Value operator()(const std::u16string& value) const { return FromUtf16(value); }
    Value operator()(const jet::Bytes& value) const { return value; }
    Value operator()(const jet::Guid& value) const {
        return std::vector<std::uint8_t>(value.bytes.begin(), value.bytes.end());
    }
    Value operator()(const jet::Numeric& value) const {
        double magnitude = 0;
        for (const auto byte : value.magnitude) magnitude = magnitude * 256 + byte;
        return (value.negative ? -magnitude : magnitude) / std::pow(10.0, value.scale);
    }
};

} // namespace

// Most texts have no characters beyond the 16-bit ones. Those are converted in one go, and looked for without a way out
// of the loop, which then works on many characters at a time.
std::u16string ToUtf16(std::wstring_view text) {
    const auto isLong = [](char32_t code) { return code > 0xFFFF; };
    char32_t all = 0;
    for (const wchar_t c : text) all |= static_cast<char32_t>(c);
    if (!isLong(all)) {
        std::u16string units(text.size(), u'\0');
        std::transform(text.begin(), text.end(), units.begin(), [](wchar_t c) { return static_cast<char16_t>(c); });
        return units;
    }
    std::u16string units;
    for (const wchar_t c : text) {
        const auto code = static_cast<char32_t>(c);
        if (isLong(code)) {
            units.push_back(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
            units.push_back(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
        } else {
            units.push_back(static_cast<char16_t>(code));
        }
    }
    return units;
}

std::wstring FromUtf16(std::u16string_view units) {
    unsigned all = 0;
    for (const char16_t unit : units) all |= unit;
    if (sizeof(wchar_t) == sizeof(char16_t) || all < 0xD800) { // no halves of pairs
        std::wstring text(units.size(), L'\0');
        std::transform(units.begin(), units.end(), text.begin(), [](char16_t c) { return static_cast<wchar_t>(c); });
        return text;
    }
    std::wstring text;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char32_t unit = units[i];
        const bool pair = (unit & 0xFC00) == 0xD800 && i + 1 < units.size() && (units[i + 1] & 0xFC00) == 0xDC00;
        if (pair) {
            text.push_back(static_cast<wchar_t>(0x10000 + ((unit - 0xD800) << 10) + (units[++i] - 0xDC00U)));
        } else {
            text.push_back(static_cast<wchar_t>(unit));
        }
    }
    return text;
}

Value FromJet(const jet::Value& value) {
    return std::visit(Converter{}, value);
}

jet::Value ToJet(const Value& value) {
    struct Back {
        jet::Value operator()(std::monostate) const { return std::monostate{}; }
        jet::Value operator()(bool plain) const { return plain; }
        jet::Value operator()(std::int32_t plain) const { return plain; }
        jet::Value operator()(double plain) const { return plain; }
        jet::Value operator()(const std::wstring& plain) const { return ToUtf16(plain); }
        jet::Value operator()(const std::vector<std::uint8_t>& plain) const { return plain; }
    };
    return std::visit(Back{}, value);
}

support::Error FromJet(const jet::Error& error, const std::wstring& context) {
    const std::wstring description = support::FromUtf8(error.what());
    return support::Error(NumberOf(error.code()), context.empty() ? description : context + L": " + description);
}

} // namespace quorvex::database
