#include "format/header.h"

#include "jet/error.h"
#include "storage/pager.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <numeric>
#include <string>

namespace jet {
namespace {

constexpr std::size_t kVersion = 0x14;
constexpr std::size_t kMaskStart = 0x18;
constexpr std::size_t kMaskSize = 0x80;
// Offsets below count from the start of the page.
constexpr std::size_t kCodePage = 0x3C;
constexpr std::size_t kPageKey = 0x3E;
constexpr std::size_t kPassword = 0x42;
constexpr std::size_t kPasswordSize = 40;
constexpr std::size_t kBuild = 0x6A;
constexpr std::size_t kSortOrder = 0x6E;
constexpr std::size_t kDate = 0x72;
constexpr std::size_t kCommitBytes = 0xE00;
constexpr std::string_view kJetName{"Standard Jet DB\0", 16};
constexpr std::string_view kAceName{"Standard ACE DB\0", 16};

std::array<Byte, kMaskSize> MakeKeystream() {
    constexpr std::array<Byte, 4> key = {0xC7, 0xDA, 0x39, 0x6B};
    std::array<Byte, 256> state;
    std::iota(state.begin(), state.end(), Byte{0});
    for (unsigned i = 0, j = 0; i < 256; ++i) {
        j = (j + state[i] + key[i % key.size()]) & 0xFF;
        std::swap(state[i], state[j]);
    }
    std::array<Byte, kMaskSize> stream;
    unsigned i = 0;
    unsigned j = 0;
    for (Byte& out : stream) {
        i = (i + 1) & 0xFF;
        j = (j + state[i]) & 0xFF;
        std::swap(state[i], state[j]);
        out = state[(state[i] + state[j]) & 0xFF];
    }
    return stream;
}

/// The password's second mask: the creation date's whole days, repeated.
void ApplyPasswordMask(Byte* field, double date) {
    const bool sane = std::isfinite(date) && std::abs(date) < 2147483647.0;
    const auto days = static_cast<std::uint32_t>(sane ? static_cast<std::int32_t>(date) : 0);
    for (std::size_t i = 0; i < kPasswordSize; ++i) {
        field[i] = static_cast<Byte>(field[i] ^ (days >> (8 * (i % 4))));
    }
}

bool HasName(const Byte* page, std::string_view name) {
    return std::memcmp(page + 4, name.data(), name.size()) == 0;
}

} // namespace

void ApplyHeaderMask(Byte* area, std::size_t size) {
    static const std::array<Byte, kMaskSize> stream = MakeKeystream();
    for (std::size_t i = 0; i < std::min(size, kMaskSize); ++i) area[i] = static_cast<Byte>(area[i] ^ stream[i]);
}

void CheckHeader(Pager& pager, std::u16string_view password) {
    if (pager.pageCount() == 0) throw Error(ErrorCode::kNotADatabase, "The file is too short to be a database");
    const PageRef page = pager.Read(0);
    const Byte* const raw = page.data();
    constexpr std::array<Byte, 4> start = {0, 1, 0, 0};
    if (!std::equal(start.begin(), start.end(), raw))
        throw Error(ErrorCode::kNotADatabase, "The file is not a database");
    if (HasName(raw, kAceName)) {
        throw Error(ErrorCode::kUnsupportedVersion, "The database has the format of Access 2007 or later (ACCDB)");
    }
    if (!HasName(raw, kJetName)) throw Error(ErrorCode::kNotADatabase, "The file is not a Jet database");
    const std::uint32_t version = Load32(raw + kVersion);
    if (version == 0) {
        throw Error(ErrorCode::kUnsupportedVersion, "The database has the older format of Access 97 (Jet 3)");
    }
    if (version != 1) throw Error(ErrorCode::kUnsupportedVersion, "The database has the format of a newer Access");
    if (pager.hasPartialPage()) throw Error(ErrorCode::kTruncated, "The database file is cut off inside a page");
    if (pager.pageCount() <= kCatalogPage)
        throw Error(ErrorCode::kTruncated, "The database file ends before its catalog");

    std::array<Byte, kMaskStart + kMaskSize> header;
    std::copy_n(raw, header.size(), header.begin());
    ApplyHeaderMask(header.data() + kMaskStart, kMaskSize);
    if (Load32(header.data() + kPageKey) != 0) {
        throw Error(ErrorCode::kEncrypted, "The database is encrypted, which is not supported");
    }
    ApplyPasswordMask(header.data() + kPassword, std::bit_cast<double>(Load64(header.data() + kDate)));
    std::u16string stored;
    for (std::size_t i = 0; i < kPasswordSize; i += 2) {
        const char16_t unit = Load16(header.data() + kPassword + i);
        if (unit == 0) break;
        stored.push_back(unit);
    }
    if (!stored.empty() && stored != password) throw Error(ErrorCode::kWrongPassword, "The database password is wrong");
}

void BuildHeader(Byte* page, double date, std::u16string_view password) {
    if (password.size() * 2 > kPasswordSize || password.find(u'\0') != std::u16string_view::npos) {
        throw Error(ErrorCode::kValueTooLong, "A database password has at most 20 characters, none of them NUL");
    }
    std::fill_n(page, kPageSize, Byte{0});
    Store32(page, 0x100);
    std::memcpy(page + 4, kJetName.data(), kJetName.size());
    Store32(page + kVersion, 1);
    Store32(page + 0x18, 0x100); // the global map
    Store32(page + 0x1C, 0x101); // a second map, always empty
    for (std::uint32_t i = 0; i < 4; ++i) Store32(page + 0x20 + 4 * i, 2 + i);
    Store16(page + kCodePage, 1252);
    for (std::size_t i = 0; i < password.size(); ++i) Store16(page + kPassword + 2 * i, password[i]);
    ApplyPasswordMask(page + kPassword, date);
    Store32(page + kBuild, 4431);
    Store16(page + kSortOrder, kGeneralLcid);
    Store64(page + kDate, std::bit_cast<std::uint64_t>(date));
    ApplyHeaderMask(page + kMaskStart, kMaskSize);
    Store32(page + 0x98, 1620);
    std::memcpy(page + 0x9C, "4.0", 4);
    for (std::size_t i = 0; i < 256; ++i) Store16(page + kCommitBytes + 2 * i, 0x0100);
}

} // namespace jet
