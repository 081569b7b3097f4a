#include "database/row_reader.h"
#include "localdata/data_file_names.h"
#include "localdata/packed_address.h"
#include "localdata/substitution.h"
#include "lookups/data_file.h"
#include "lookups/local_replies.h"
#include "lookups/postcode.h"
#include "object/tag_writer.h"
#include "support/error.h"
#include "support/files.h"
#include "support/log.h"
#include "support/text.h"

#include <array>
#include <optional>
#include <string_view>
#include <utility>

// Replies from the two address files.

namespace quorvex::lookups {
namespace {

constexpr std::size_t kUsualReply = 1000; // characters
constexpr std::size_t kUsualRecord = 150;

void AppendRecord(LocalList& list, std::wstring_view postcode, int number, std::wstring_view line) {
    std::wstring& text = list.records;
    text.append(L"  <record>\r\n    <id>").append(postcode).append(1, L'_');
    support::AppendNumber(text, number);
    text.append(L"_F</id>\r\n    <line>").append(line).append(L"    </line>\r\n  </record>\r\n");
}

std::wstring Confirmed() {
    std::wstring reply;
    reply.reserve(kUsualReply);
    object::AppendElement(reply, L"confirm", L"Yes");
    return reply;
}

LocalList TestList() {
    // The count is not that of the records: intended, hosts' own tests know it.
    static constexpr std::array<int, 14> kHouses = {1, 3, 5, 7, 8, 9, 10, 11, 12, 14, 15, 16, 17, 19};
    LocalList list;
    for (const int house : kHouses) {
        AppendRecord(list, kTestPostcode, house,
                     std::to_wstring(house) + L" Victoria Road The East Side Demo Data Wisbech");
    }
    list.recordCount = 40;
    list.reply = Confirmed();
    object::AppendElement(list.reply, L"recordcount", L"40");
    object::AppendElement(list.reply, L"credits_display_text", L"Demo data");
    return list;
}

std::wstring TestRecord(const std::wstring& line1, const std::wstring& organisation) {
    const std::pair<const wchar_t*, std::wstring_view> elements[] = {
        {L"organisation", organisation}, {L"line1", line1},
        {L"line2", L"The east side"},    {L"line3", L""},
        {L"town", L"Wisbech"},           {L"county", L"Cambridgeshire"},
        {L"postcode", kTestPostcode},    {L"country", L"Country"},
        {L"pz_mailsort", L"51252"},      {L"credits_display_text", L"Test data"},
        {L"errormessage", L""}};
    std::wstring reply = Confirmed();
    for (const auto& [name, value] : elements) object::AppendElement(reply, name, value);
    return reply;
}

void AppendDisplayAndErrorText(std::wstring& reply, const object::Quorvex& object) {
    object::AppendElement(reply, L"credits_display_text", object.General_credits_display_text);
    object::AppendElement(reply, L"errormessage", object.General_errormessage);
}

// The packed field of a postcode's first row, unscrambled; nothing without a row.
std::optional<std::wstring> PackedField(object::Quorvex& object, wchar_t kind, const std::wstring& table,
                                        const std::wstring& postcode, const localdata::SubstitutionTable* known) {
    const std::wstring file = localdata::DataFilePath(object.DataPath(), *localdata::FindDataFile(kind));
    database::RowReader rows(object.databases, file,
                             L"SELECT * From [" + table + L"] WHERE [FT_Postcode]='" + postcode + L"';");
    if (rows.AtEnd()) return std::nullopt;
    const std::wstring stored = rows.Text(L"FT_Address");
    rows.Close();
    return known != nullptr ? known->Unscramble(stored)
                            : localdata::SharedSubstitution(object.DataPath())->Unscramble(stored);
}

// A row without premises is not empty but unreadable, most often for lack of the substitution table: the log says so,
// since the empty list alone would look like an unknown postcode.
localdata::PackedAddress Split(const object::Quorvex& object, const std::wstring& plain, const std::wstring& key) {
    localdata::PackedAddress address = localdata::SplitPackedAddress(plain);
    if (!address.premises.empty()) return address;
    const std::wstring table = object.DataPath() + L"\\" + localdata::kSubstitutionFile;
    std::wstring text = L"The row of " + key + L" in the address file cannot be read as packed";
    if (!support::FileExists(table)) text += L"; the substitution table is missing: " + table;
    support::LogError(object.platform, support::Error(support::kErrorBadFile, text));
    return address;
}

} // namespace

HouseFilter::HouseFilter(const std::wstring& house)
    : text_(support::UpperCase(house)), number_(support::IsNumber(house)) {}

bool HouseFilter::Keeps(const std::wstring& line) const {
    if (text_.empty()) return true;
    const std::wstring upper = support::UpperCase(line);
    const auto holds = [](const std::wstring& text, const std::wstring& sought) {
        return text.find(sought) != std::wstring::npos;
    };
    return number_ ? holds(L" " + upper, L" " + text_) || holds(upper, L"-" + text_) : holds(upper, text_);
}

LocalList LocalAddressList(object::Quorvex& object, const std::wstring& postcode, const std::wstring& house,
                           const localdata::SubstitutionTable* table) {
    const std::wstring key = LocalPostcode(postcode);
    if (key == kTestPostcode) {
        RequireDataFile(object, L'F');
        return TestList();
    }
    LocalList list;
    list.reply = Confirmed();
    const auto plain = PackedField(object, L'F', L"PAF_FULLAddress", key, table);
    if (!plain) return list;
    const localdata::PackedAddress address = Split(object, *plain, key);
    const std::wstring street = localdata::StreetPart(address.common);
    const HouseFilter filter(house);
    list.records.reserve(address.premises.size() * kUsualRecord);
    for (const std::wstring_view premise : address.premises) {
        const std::wstring line = localdata::DisplayLine(premise, street);
        // Numbers count the kept lines, not the premises: intended.
        if (filter.Keeps(line)) AppendRecord(list, postcode, ++list.recordCount, line);
    }
    return list;
}

std::wstring LocalAddressRecord(object::Quorvex& object, const std::wstring& addressId,
                                const localdata::SubstitutionTable* table) {
    std::wstring rest = addressId;
    const std::wstring postcode = support::NextField(rest, L"_", true);
    const std::wstring number = support::NextField(rest, L"_", true);
    const std::wstring key = LocalPostcode(postcode);
    if (key == kTestPostcode) {
        RequireDataFile(object, L'F');
        return TestRecord(number + L" Victoria Rd", L"Demo Data Company");
    }
    const auto plain = PackedField(object, L'F', L"PAF_FullAddress", key, table);
    if (!plain) return {};
    const localdata::PackedAddress address = Split(object, *plain, key);
    // All premises are counted here, also those that a house filter kept out of the list: intended.
    for (std::size_t i = 0; i < address.premises.size(); ++i) {
        std::wstring identifier = postcode + L"_";
        support::AppendNumber(identifier, static_cast<std::int32_t>(i + 1));
        if (identifier.append(L"_F") != addressId) continue;
        const localdata::RecordFields field = localdata::AddressRecord(address.premises[i], address.common);
        static constexpr std::array<const wchar_t*, localdata::kRecordFields> kNames = {
            L"organisation", L"line1",    L"line2",       L"line3",   L"town",
            L"county",       L"postcode", nullptr,        L"country", L"deliverypointsuffix",
            L"nohouseholds", L"smallorg", L"pz_mailsort", L"spare"};
        std::wstring reply = Confirmed();
        for (std::size_t k = 0; k < kNames.size(); ++k) {
            if (kNames[k] != nullptr) object::AppendElement(reply, kNames[k], field[k]);
        }
        AppendDisplayAndErrorText(reply, object);
        return reply;
    }
    return {};
}

std::wstring LocalThoroughfareRecord(object::Quorvex& object, const std::wstring& postcode,
                                     const localdata::SubstitutionTable* table) {
    const std::wstring key = LocalPostcode(postcode);
    if (key == kTestPostcode) {
        RequireDataFile(object, L'T');
        return TestRecord(L"Victoria Rd", L"");
    }
    const auto plain = PackedField(object, L'T', L"PAF_StreetAddress", key, table);
    if (!plain) return {};
    const localdata::ThoroughfareFields field = localdata::ThoroughfareRecord(*plain);
    static constexpr std::array<const wchar_t*, localdata::kThoroughfareFields> kNames = {
        L"line1", L"line2", L"line3", L"town", L"county", L"postcode", L"country", nullptr, L"pz_mailsort"};
    std::wstring reply = Confirmed();
    object::AppendElement(reply, L"organisation", L"");
    for (std::size_t k = 0; k < kNames.size(); ++k) {
        if (kNames[k] != nullptr) object::AppendElement(reply, kNames[k], field[k]);
    }
    AppendDisplayAndErrorText(reply, object);
    return reply;
}

} // namespace quorvex::lookups
