#include "format/sort_key.h"

#include "format/sort_weights.h"
#include "jet/error.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace jet {
namespace {

constexpr Byte kNullAscending = 0x00;
constexpr Byte kNullDescending = 0xFF;
constexpr Byte kValueAscending = 0x7F;
constexpr Byte kValueDescending = 0x80;
constexpr std::size_t kIndexedUnits = 255;
constexpr Byte kEndOfWeights = 0x01;
constexpr Byte kNoAccent = 0x02;
constexpr Byte kUnknownWeight = 0xFE;

std::u16string_view TrimEnd(std::u16string_view text) {
    while (!text.empty() && text.back() == u' ') text.remove_suffix(1);
    return text;
}

/// Appends the three sections of a text key: weights, accents, and the places of characters without weight.
void AppendTextKey(Bytes& weights, std::u16string_view text) {
    Bytes accents;
    Bytes tail;
    weights.reserve(weights.size() + text.size() + 2);
    std::size_t position = 0; // characters with weight so far
    std::size_t covered = 0;  // of these, how many the accents reach over
    for (const char16_t c : text) {
        const SortWeight* const weight = FindSortWeight(c);
        if (!weight) {
            weights.push_back(kUnknownWeight);
            weights.push_back(static_cast<Byte>(c >> 8));
            weights.push_back(static_cast<Byte>(c));
            ++position;
            continue;
        }
        if (weight->kind == SortWeight::kIgnored) continue;
        if (weight->kind == SortWeight::kTail) {
            const std::size_t place = accents.empty() ? position : accents.size() + (position - covered);
            const std::size_t code = 0x8000 | ((7 + 4 * place) & 0xFFFF);
            tail.push_back(static_cast<Byte>(code >> 8));
            tail.push_back(static_cast<Byte>(code));
            tail.push_back(0x06);
            tail.push_back(weight->first);
            continue;
        }
        weights.push_back(weight->first);
        if (weight->kind == SortWeight::kTwo) weights.push_back(weight->second);
        if (weight->extra != 0) {
            accents.insert(accents.end(), position - covered, kNoAccent);
            accents.push_back(weight->extra);
            covered = position + 1;
        }
        ++position;
    }
    while (!accents.empty() && accents.back() <= kNoAccent) accents.pop_back();
    weights.push_back(kEndOfWeights);
    AppendBytes(weights, accents);
    if (!tail.empty()) {
        weights.insert(weights.end(), 3, kEndOfWeights);
        AppendBytes(weights, tail);
    }
}

void AppendBig(Bytes& key, std::uint64_t value, std::size_t size) {
    for (std::size_t i = size; i-- > 0;) key.push_back(static_cast<Byte>(value >> (8 * i)));
}

void InvertFrom(Bytes& key, std::size_t start) {
    for (std::size_t i = start; i < key.size(); ++i) key[i] = static_cast<Byte>(~key[i]);
}

void AppendSigned(Bytes& key, std::int64_t value, std::size_t size, bool ascending) {
    const std::size_t start = key.size();
    const std::uint64_t top = std::uint64_t{1} << (8 * size - 1);
    AppendBig(key, static_cast<std::uint64_t>(value) ^ top, size);
    if (!ascending) InvertFrom(key, start);
}

void AppendFloat(Bytes& key, std::uint64_t bits, std::size_t size, bool ascending) {
    const std::size_t start = key.size();
    const std::uint64_t top = std::uint64_t{1} << (8 * size - 1);
    AppendBig(key, (bits & top) != 0 ? ~bits : bits ^ top, size);
    if (!ascending) InvertFrom(key, start);
}

double Ordinary(double value) {
    if (std::isnan(value)) throw Error(ErrorCode::kUnsupported, "A value that is not a number cannot be indexed");
    return value == 0 ? 0.0 : value; // negative zero would get a key of its own
}

void AppendBinary(Bytes& key, ByteView value, bool ascending) {
    constexpr std::size_t kGroup = 8;
    for (std::size_t done = 0; done < value.size(); done += kGroup) {
        const std::size_t count = std::min(kGroup, value.size() - done);
        const bool last = done + count == value.size();
        const std::size_t start = key.size();
        AppendBytes(key, value.subspan(done, count));
        key.resize(start + kGroup);
        if (last) key.push_back(static_cast<Byte>(count));
        if (!ascending) InvertFrom(key, start);
        // In descending order the count is inverted in the last group only.
        if (!last) key.push_back(kGroup + 1);
    }
}

void AppendGuid(Bytes& key, const Guid& guid, bool ascending) {
    constexpr std::array<std::size_t, 16> printed = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    std::array<Byte, 16> bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = guid.bytes[printed[i]];
    AppendBinary(key, bytes, ascending);
}

void AppendNumeric(Bytes& key, const Numeric& value, bool ascending) {
    key.push_back(value.negative ? 0x00 : 0xFF);
    const std::size_t start = key.size();
    AppendBytes(key, value.magnitude);
    // The sign byte stays as it is in descending order: the format's own engine does so.
    if (value.negative == ascending) InvertFrom(key, start);
}

void AppendText(Bytes& key, std::u16string_view text, bool ascending) {
    if (!IsIndexableText(text)) {
        throw Error(ErrorCode::kUnsupported, "A text holds characters that cannot be indexed here");
    }
    const std::size_t start = key.size();
    AppendTextKey(key, TrimEnd(text.substr(0, kIndexedUnits)));
    key.push_back(0);
    if (ascending) return;
    InvertFrom(key, start);
    key.push_back(0);
}

struct KeyWriter {
    Bytes& key;
    const Column& column;
    bool ascending;

    [[noreturn]] static void Mismatch() { throw Error(ErrorCode::kTypeMismatch, "An indexed value has another type"); }

    void operator()(std::monostate) const { Mismatch(); }
    void operator()(bool value) const { key.push_back(value == ascending ? 0x00 : 0xFF); }
    void operator()(std::int32_t value) const {
        if (column.type == ColumnType::kByte) {
            key.push_back(static_cast<Byte>(ascending ? value : ~value));
        } else {
            AppendSigned(key, value, column.type == ColumnType::kInteger ? 2 : 4, ascending);
        }
    }
    void operator()(double value) const {
        const double v = Ordinary(value);
        if (column.type == ColumnType::kSingle) {
            AppendFloat(key, std::bit_cast<std::uint32_t>(static_cast<float>(v)), 4, ascending);
        } else {
            AppendFloat(key, std::bit_cast<std::uint64_t>(v), 8, ascending);
        }
    }
    void operator()(const Currency& value) const { AppendSigned(key, value.scaled, 8, ascending); }
    void operator()(const DateTime& value) const {
        AppendFloat(key, std::bit_cast<std::uint64_t>(Ordinary(value.days)), 8, ascending);
    }
    void operator()(const std::u16string& value) const { AppendText(key, value, ascending); }
    void operator()(const Bytes& value) const { AppendBinary(key, value, ascending); }
    void operator()(const Guid& value) const { AppendGuid(key, value, ascending); }
    void operator()(const Numeric& value) const { AppendNumeric(key, value, ascending); }
};

} // namespace

void AppendKey(Bytes& key, const Column& column, const Value& value, bool ascending) {
    if (IsNull(value)) {
        key.push_back(ascending ? kNullAscending : kNullDescending);
        return;
    }
    if (column.IsTextual() && !HasKnownOrder(column)) {
        throw Error(ErrorCode::kUnsupported,
                    "A text column with a sort order other than General cannot be indexed here");
    }
    key.push_back(ascending ? kValueAscending : kValueDescending);
    std::visit(KeyWriter{key, column, ascending}, value);
}

bool IsIndexableText(std::u16string_view text) {
    text = text.substr(0, kIndexedUnits);
    return std::all_of(text.begin(), text.end(), [](char16_t c) { return FindSortWeight(c) != nullptr; });
}

bool HasKnownOrder(const Column& column) {
    return column.sortOrder == kGeneralLcid && column.sortVersion == 0;
}

Bytes CompareKey(std::u16string_view text) {
    Bytes key;
    AppendTextKey(key, TrimEnd(text));
    return key;
}

} // namespace jet
