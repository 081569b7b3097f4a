#pragma once

#include "service/local_data.h"
#include "web/endpoints.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace quorvex::service {

// Finds addresses without a postcode. Made once from all rows: which rows hold which words; the rows themselves are
// read again when a search comes to them.
class AddressIndex {
  public:
    // Reads all rows.
    explicit AddressIndex(const LocalData& data);

    // The values that a place can be chosen from, joined by ",", and a text that changes whenever one of the lists
    // does.
    const std::wstring& Areas() const { return areas_; }
    const std::wstring& Towns() const { return townList_; }
    const std::wstring& Counties() const { return countyList_; }
    const std::wstring& ListVersion() const { return listVersion_; }

    struct Result {
        bool criteriaGiven = false;
        bool cut = false; // there are more than kMostLines
        int lines = 0;
        std::wstring
            records; // "<h>street, town</h>", then "<l>premise, postcode</l><id>...</id>" for each address there
    };
    static constexpr int kMostLines = 1000;
    // Addresses that meet all criteria given. Organisation, building and street are met by whole words or beginnings
    // ("some*"); a town or county by its name, else by words of it; a postcode area by its letters, an outward code, or
    // a beginning.
    Result Search(const LocalData& data, const web::AdvancedCriteria& criteria) const;

  private:
    using RowNumbers = std::vector<std::uint32_t>; // ascending
    using WordRows = std::map<std::wstring, RowNumbers>;
    class Candidates;

    void AddRow(const std::wstring& key, const std::wstring& plain);
    void MakeLists();

    std::vector<std::wstring> keys_; // by row number
    WordRows organisations_;
    WordRows houses_;
    WordRows streets_;
    WordRows towns_;    // by whole value
    WordRows counties_; // by whole value
    std::wstring areas_;
    std::wstring townList_;
    std::wstring countyList_;
    std::wstring listVersion_;
};

} // namespace quorvex::service
