#pragma once

#include "jet/bytes.h"

#include <array>
#include <compare>
#include <string>
#include <variant>

namespace jet {

/// Type codes as stored in a column record.
enum class ColumnType : std::uint8_t {
    kBoolean = 0x01,
    kByte = 0x02,
    kInteger = 0x03,
    kLong = 0x04,
    kCurrency = 0x05,
    kSingle = 0x06,
    kDouble = 0x07,
    kDateTime = 0x08,
    kBinary = 0x09,
    kText = 0x0A,
    kOle = 0x0B,
    kMemo = 0x0C,
    kGuid = 0x0F,
    kNumeric = 0x10,
    kInternal = 0x11,
};

/// Money in ten-thousandths.
struct Currency {
    std::int64_t scaled = 0;
    friend bool operator==(const Currency&, const Currency&) = default;
};

/// Days since 1899-12-30; the fraction is the time of day, also for negative days.
struct DateTime {
    double days = 0;
    friend bool operator==(const DateTime&, const DateTime&) = default;
};

/// Sixteen bytes in stored order (the first three groups little-endian).
struct Guid {
    std::array<Byte, 16> bytes{};
    friend bool operator==(const Guid&, const Guid&) = default;
};

/// A decimal of up to 28 digits: magnitude big-endian in 16 bytes, divided by 10^scale.
struct Numeric {
    bool negative = false;
    std::array<Byte, 16> magnitude{};
    std::uint8_t scale = 0;
    friend bool operator==(const Numeric&, const Numeric&) = default;
};

/// One cell. monostate is NULL; BYTE, INTEGER and LONG are int32; SINGLE and DOUBLE are double; BINARY and OLE are
/// Bytes.
using Value =
    std::variant<std::monostate, bool, std::int32_t, double, Currency, DateTime, std::u16string, Bytes, Guid, Numeric>;

inline bool IsNull(const Value& value) {
    return std::holds_alternative<std::monostate>(value);
}

/// A row's permanent id: the place of its header. It stays the same when an update moves the row's body.
struct RowId {
    std::uint32_t page = 0;
    std::uint8_t slot = 0;
    friend auto operator<=>(const RowId&, const RowId&) = default;
};

} // namespace jet
