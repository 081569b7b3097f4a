#include "format/header.h"

#include "base/row_pointer.h"
#include "jet/error.h"
#include "jet/value.h"
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

constexpr std::string_view kJetName{"Standard Jet DB\0", 16};
constexpr std::string_view kAceName{"Standard ACE DB\0", 16};
constexpr std::string_view kEngineVersion{"4.0\0", 4};

std::array<Byte, kHeaderMaskSize> MakeKeystream() {
    constexpr std::array<Byte, 4> key = {0xC7, 0xDA, 0x39, 0x6B};
    std::array<Byte, 256> state;
    std::iota(state.begin(), state.end(), Byte{0});
    for (unsigned i = 0, j = 0; i < 256; ++i) {
        j = (j + state[i] + key[i % key.size()]) & 0xFF;
        std::swap(state[i], state[j]);
    }
    std::array<Byte, kHeaderMaskSize> stream;
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

/// The password is masked a second time, with the whole days of the creation date.
void ApplyPasswordMask(Byte* field, double date) {
    const bool sane = std::isfinite(date) && std::abs(date) < 2147483647.0;
    const auto days = static_cast<std::uint32_t>(sane ? static_cast<std::int32_t>(date) : 0);
    for (std::size_t i = 0; i < kHeaderPasswordSize; ++i) {
        field[i] = static_cast<Byte>(field[i] ^ (days >> (8 * (i % 4))));
    }
}

bool HasName(const Byte* page, std::string_view name) {
    return std::memcmp(page + kHeaderName, name.data(), name.size()) == 0;
}

} // namespace

void ApplyHeaderMask(Byte* area, std::size_t size) {
    static const std::array<Byte, kHeaderMaskSize> stream = MakeKeystream();
    for (std::size_t i = 0; i < std::min(size, kHeaderMaskSize); ++i) area[i] = static_cast<Byte>(area[i] ^ stream[i]);
}

void CheckHeader(Pager& pager, std::u16string_view password) {
    if (pager.pageCount() == 0) throw Error(ErrorCode::kNotADatabase, "The file is too short to be a database");
    const PageRef page = pager.Read(0);
    const Byte* const raw = page.data();
    if (Load32(raw + kHeaderStart) != kHeaderStartValue)
        throw Error(ErrorCode::kNotADatabase, "The file is not a database");
    if (HasName(raw, kAceName)) {
        throw Error(ErrorCode::kUnsupportedVersion, "The database has the format of Access 2007 or later (ACCDB)");
    }
    if (!HasName(raw, kJetName)) throw Error(ErrorCode::kNotADatabase, "The file is not a Jet database");
    const std::uint32_t version = Load32(raw + kHeaderVersion);
    if (version == kVersionJet3) {
        throw Error(ErrorCode::kUnsupportedVersion, "The database has the older format of Access 97 (Jet 3)");
    }
    if (version != kVersionJet4)
        throw Error(ErrorCode::kUnsupportedVersion, "The database has the format of a newer Access");
    if (pager.hasPartialPage()) throw Error(ErrorCode::kTruncated, "The database file is cut off inside a page");
    if (pager.pageCount() <= kCatalogPage)
        throw Error(ErrorCode::kTruncated, "The database file ends before its catalog");

    std::array<Byte, kHeaderMaskStart + kHeaderMaskSize> header;
    std::copy_n(raw, header.size(), header.begin());
    ApplyHeaderMask(header.data() + kHeaderMaskStart, kHeaderMaskSize);
    if (Load32(header.data() + kHeaderPageKey) != 0) {
        throw Error(ErrorCode::kEncrypted, "The database is encrypted, which is not supported");
    }
    ApplyPasswordMask(header.data() + kHeaderPassword, std::bit_cast<double>(Load64(header.data() + kHeaderDate)));
    std::u16string stored;
    for (std::size_t i = 0; i < kHeaderPasswordSize; i += 2) {
        const char16_t unit = Load16(header.data() + kHeaderPassword + i);
        if (unit == 0) break;
        stored.push_back(unit);
    }
    if (!stored.empty() && stored != password) throw Error(ErrorCode::kWrongPassword, "The database password is wrong");
}

void BuildHeader(Byte* page, double date, std::u16string_view password) {
    if (password.size() * 2 > kHeaderPasswordSize || password.find(u'\0') != std::u16string_view::npos) {
        throw Error(ErrorCode::kValueTooLong, "A database password has at most 20 characters, none of them NUL");
    }
    std::fill_n(page, kPageSize, Byte{0});
    Store32(page + kHeaderStart, kHeaderStartValue);
    std::memcpy(page + kHeaderName, kJetName.data(), kJetName.size());
    Store32(page + kHeaderVersion, kVersionJet4);
    Store32(page + kHeaderGlobalMap, PointerFromRowId({kGlobalMapPage, 0}));
    Store32(page + kHeaderSecondMap, PointerFromRowId({kGlobalMapPage, 1}));
    std::size_t next = kHeaderSystemTables;
    for (const PageNo table : {kCatalogPage, kAccessPage, kQueriesPage, kRelationshipsPage}) {
        Store32(page + next, table);
        next += sizeof(PageNo);
    }
    Store16(page + kHeaderCodePage, kCodePageLatin1);
    for (std::size_t i = 0; i < password.size(); ++i) Store16(page + kHeaderPassword + 2 * i, password[i]);
    ApplyPasswordMask(page + kHeaderPassword, date);
    Store32(page + kHeaderBuild, kBuildNumber);
    Store16(page + kHeaderSortOrder, kGeneralLcid);
    Store64(page + kHeaderDate, std::bit_cast<std::uint64_t>(date));
    ApplyHeaderMask(page + kHeaderMaskStart, kHeaderMaskSize);
    Store32(page + kHeaderConstant, kHeaderConstantValue);
    std::memcpy(page + kHeaderEngine, kEngineVersion.data(), kEngineVersion.size());
    for (std::size_t i = 0; i < kCommitPairs; ++i) Store16(page + kHeaderCommitBytes + 2 * i, kCommitStart);
}

} // namespace jet
