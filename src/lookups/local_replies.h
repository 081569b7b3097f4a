#pragma once

#include "localdata/substitution.h"
#include "object/quorvex.h"

#include <cstdint>
#include <string>

namespace quorvex::lookups {

// The service's replies, built from the local data files. table: the data folder's, for callers who have it; null to
// read it. All throw support::Error when a file cannot be opened or read.

struct LocalList {
    std::wstring reply;
    std::wstring records;
    std::int32_t recordCount = 0;
};
// The addresses at a postcode as the host gave it; house keeps the lines that hold it, empty keeps all.
LocalList LocalAddressList(object::Quorvex& object, const std::wstring& postcode, const std::wstring& house,
                           const localdata::SubstitutionTable* table = nullptr);
// Empty when no premise has the identifier.
std::wstring LocalAddressRecord(object::Quorvex& object, const std::wstring& addressId,
                                const localdata::SubstitutionTable* table = nullptr);
std::wstring LocalThoroughfareRecord(object::Quorvex& object, const std::wstring& postcode,
                                     const localdata::SubstitutionTable* table = nullptr);
// Empty when nothing is found; the key as in GetPostZonAddressRecord.
std::wstring LocalPostZonRecord(object::Quorvex& object, const std::wstring& key);
// The postcode of the nearest row inside the search square; empty when there is none.
std::wstring LocalNearestPostcode(object::Quorvex& object, double longitude, double latitude);

// Keeps the lines of a house: a number at the line's beginning, behind a blank or behind a hyphen; any other text
// anywhere. Case is ignored, and so is what follows: 1 keeps 12, too.
class HouseFilter {
  public:
    explicit HouseFilter(const std::wstring& house);
    bool Keeps(const std::wstring& line) const;

  private:
    std::wstring text_; // upper-cased; empty keeps all
    bool number_ = false;
};

inline constexpr wchar_t kTestPostcode[] = L"ZZ99"; // answered without data

} // namespace quorvex::lookups
