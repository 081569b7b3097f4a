#include "service/address_index.h"

#include "service/reply.h"
#include "service/row_parts.h"
#include "service/words.h"
#include "support/characters.h"
#include "support/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <numeric>
#include <optional>

namespace quorvex::service {
namespace {

void Note(std::vector<std::uint32_t>& rows, std::uint32_t row) {
    if (rows.empty() || rows.back() != row) rows.push_back(row);
}

std::wstring AreaOf(const std::wstring& key) {
    const auto digit = std::find_if(key.begin(), key.end(), support::IsDigit<wchar_t>);
    return digit == key.end() ? std::wstring() : std::wstring(key.begin(), digit);
}

std::wstring OutwardOf(const std::wstring& key) {
    return key.size() < 3 ? key : std::wstring(support::Trim(std::wstring_view(key).substr(0, key.size() - 3)));
}

class AreaFilter {
  public:
    explicit AreaFilter(const std::wstring& typed) : text_(support::ReplaceAll(support::UpperCase(typed), L" ", L"")) {
        const std::size_t star = text_.find(L'*');
        beginning_ = star != std::wstring::npos;
        if (beginning_) text_.resize(star);
    }

    bool Given() const { return !text_.empty(); }
    bool MetBy(const std::wstring& key) const {
        if (text_.empty()) return true;
        if (beginning_) return support::ReplaceAll(key, L" ", L"").starts_with(text_);
        return std::none_of(text_.begin(), text_.end(), support::IsDigit<wchar_t>) ? AreaOf(key) == text_
                                                                                   : OutwardOf(key) == text_;
    }

  private:
    std::wstring text_;
    bool beginning_ = false;
};

// A value of a list is the place itself ("Newport" is not "Newport Pagnell"); anything else is met by words.
std::vector<std::uint32_t> RowsOfPlace(const std::map<std::wstring, std::vector<std::uint32_t>>& places,
                                       const std::wstring& typed, const Criterion& criterion) {
    const auto exact = places.find(support::UpperCase(support::Trim(typed)));
    if (exact != places.end()) return exact->second;
    std::vector<std::uint32_t> rows;
    for (const auto& [place, its] : places) {
        if (criterion.MetBy(Words(place))) rows.insert(rows.end(), its.begin(), its.end());
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

// Lists are cut at commas, and a digit shows that a damaged row has something else in the place of a place.
template <typename Map>
std::wstring Joined(const Map& values) {
    std::wstring list;
    for (const auto& [value, rows] : values) {
        if (value.find(L',') != std::wstring::npos ||
            std::any_of(value.begin(), value.end(), support::IsDigit<wchar_t>))
            continue;
        if (!list.empty()) list.push_back(L',');
        list.append(value);
    }
    return list;
}

// FNV-1a, 64 bits.
std::wstring Fingerprint(const std::wstring& text) {
    std::uint64_t hash = 14695981039346656037ULL;
    for (const char c : support::ToUtf8(text)) hash = (hash ^ static_cast<std::uint8_t>(c)) * 1099511628211ULL;
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), hash, 16).ptr;
    return std::wstring(digits.data(), end);
}

// The premises found, by street and town, then by postcode.
class Listing {
  public:
    Listing(const Criterion& organisation, const Criterion& house) : organisation_(organisation), house_(house) {}

    bool Full() const { return full_; }

    // The premises of a row that meet the criteria. Neither a heading nor a line may be empty: an empty one ends the
    // reader's walk.
    void Add(const std::wstring& key, const RowParts& parts) {
        const std::wstring& postcode = parts.postcode.empty() ? key : parts.postcode;
        std::wstring heading = parts.street;
        if (!parts.town.empty()) heading += (heading.empty() ? L"" : L", ") + parts.town;
        if (heading.empty()) heading = postcode;
        for (std::size_t i = 0; i < parts.premises.size() && !full_; ++i) {
            const RowParts::Premise& premise = parts.premises[i];
            if (!organisation_.MetBy(Words(premise.organisation)) || !house_.MetBy(Words(premise.house))) continue;
            full_ = lines_ == AddressIndex::kMostLines;
            if (full_) break;
            ++lines_;
            const std::wstring line = premise.text.empty() ? postcode : premise.text + L", " + postcode;
            groups_[heading][key] +=
                ItemElement(L"l", line) + ItemElement(L"id", key + L"_" + std::to_wstring(i + 1) + L"_F");
        }
    }

    void WriteTo(AddressIndex::Result& result) const {
        result.lines = lines_;
        result.cut = full_;
        for (const auto& [heading, postcodes] : groups_) {
            result.records += ItemElement(L"h", heading);
            for (const auto& [key, lines] : postcodes) result.records += lines;
        }
    }

  private:
    const Criterion& organisation_;
    const Criterion& house_;
    std::map<std::wstring, std::map<std::wstring, std::wstring>> groups_;
    int lines_ = 0;
    bool full_ = false;
};

} // namespace

// The rows that may hold what is sought; all of them until the first narrowing.
class AddressIndex::Candidates {
  public:
    void Narrow(RowNumbers rows) {
        if (rows_) {
            RowNumbers both;
            std::set_intersection(rows_->begin(), rows_->end(), rows.begin(), rows.end(), std::back_inserter(both));
            rows = std::move(both);
        }
        rows_ = std::move(rows);
    }

    void Narrow(const WordRows& index, const Criterion& criterion) {
        for (const std::wstring& word : criterion.Whole()) {
            const auto found = index.find(word);
            Narrow(found == index.end() ? RowNumbers() : found->second);
        }
        for (const std::wstring& beginning : criterion.Beginnings()) {
            RowNumbers rows;
            for (auto word = index.lower_bound(beginning); word != index.end() && word->first.starts_with(beginning);
                 ++word) {
                rows.insert(rows.end(), word->second.begin(), word->second.end());
            }
            std::sort(rows.begin(), rows.end());
            rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
            Narrow(std::move(rows));
        }
    }

    RowNumbers Rows(std::size_t count) const {
        if (rows_) return *rows_;
        RowNumbers all(count);
        std::iota(all.begin(), all.end(), 0U);
        return all;
    }

  private:
    std::optional<RowNumbers> rows_;
};

AddressIndex::AddressIndex(const LocalData& data) {
    data.WalkFull([this](const std::wstring& key, const std::wstring& plain) { AddRow(key, plain); });
    MakeLists();
}

void AddressIndex::AddRow(const std::wstring& key, const std::wstring& plain) {
    const RowParts parts = PartsOf(plain);
    if (parts.premises.empty()) return;
    const auto row = static_cast<std::uint32_t>(keys_.size());
    keys_.push_back(support::UpperCase(key));
    for (const RowParts::Premise& premise : parts.premises) {
        for (const std::wstring& word : Words(premise.organisation)) Note(organisations_[word], row);
        for (const std::wstring& word : Words(premise.house)) Note(houses_[word], row);
    }
    for (const std::wstring& word : StreetWords(parts.street)) Note(streets_[word], row);
    if (!parts.town.empty()) Note(towns_[support::UpperCase(parts.town)], row);
    if (!parts.county.empty()) Note(counties_[support::UpperCase(parts.county)], row);
}

void AddressIndex::MakeLists() {
    std::map<std::wstring, bool> areas;
    for (const std::wstring& key : keys_) {
        const std::wstring area = AreaOf(key);
        if (!area.empty()) areas.emplace(area, true);
    }
    areas_ = Joined(areas);
    townList_ = Joined(towns_);
    countyList_ = Joined(counties_);
    listVersion_ = Fingerprint(areas_ + L"|" + townList_ + L"|" + countyList_);
}

AddressIndex::Result AddressIndex::Search(const LocalData& data, const web::AdvancedCriteria& criteria) const {
    const Criterion organisation(criteria.company);
    const Criterion house(criteria.house);
    const Criterion street(criteria.street, Criterion::Kind::Street);
    const Criterion town(criteria.town);
    const Criterion county(criteria.county);
    const AreaFilter area(criteria.postcodeArea);
    Result result;
    result.criteriaGiven =
        organisation.Given() || house.Given() || street.Given() || town.Given() || county.Given() || area.Given();
    if (!result.criteriaGiven) return result;

    Candidates candidates;
    candidates.Narrow(organisations_, organisation);
    candidates.Narrow(houses_, house);
    candidates.Narrow(streets_, street);
    if (town.Given()) candidates.Narrow(RowsOfPlace(towns_, criteria.town, town));
    if (county.Given()) candidates.Narrow(RowsOfPlace(counties_, criteria.county, county));

    Listing listing(organisation, house);
    for (const std::uint32_t row : candidates.Rows(keys_.size())) {
        const std::wstring& key = keys_[row];
        if (!area.MetBy(key)) continue;
        listing.Add(key, PartsOf(data.FullRow(key).value_or(std::wstring())));
        if (listing.Full()) break;
    }
    listing.WriteTo(result);
    return result;
}

} // namespace quorvex::service
