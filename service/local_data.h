#pragma once

#include "localdata/status.h"
#include "localdata/substitution.h"
#include "object/quorvex.h"
#include "service/reply.h"
#include "service/service_platform.h"

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::service {

// A folder of local data files, asked through the component's own lookups: what the service answers is what local mode
// answers. Any number of threads may ask at a time. Everything but the plain answers throws support::Error when a file
// cannot be read.
class LocalData {
  public:
    // Throws support::Error when the folder holds no data file.
    explicit LocalData(const std::filesystem::path& folder);
    ~LocalData();
    LocalData(const LocalData&) = delete;
    LocalData& operator=(const LocalData&) = delete;

    // All addresses at a postcode, or at "postcode, house".
    Reply AddressList(const std::wstring& postcode) const;
    // The record of "postcode_number_F"; the number counts all premises of the postcode.
    Reply AddressRecord(const std::wstring& id) const;
    Reply StreetRecord(const std::wstring& postcode) const;
    // By postcode (5 to 8 characters), grid reference (9 or more) or "longitude|latitude"; with the distance to a home
    // postcode that is found.
    Reply PostZonRecord(const std::wstring& key, const std::wstring& homePostcode) const;

    localdata::LastUpdateDates Dates() const;
    // The plain text of a row of the full addresses; nothing when there is none.
    std::optional<std::wstring> FullRow(const std::wstring& key) const;
    // All rows of the full addresses in table order; none when the folder does not hold them.
    void WalkFull(const std::function<void(const std::wstring& key, const std::wstring& plain)>& visit) const;

  private:
    // A lookup object with the databases that it keeps open.
    struct Reader;
    // A reader for the time of one answer.
    class Lease;

    template <typename Work>
    auto Asked(Work work) const;

    std::wstring folder_;
    localdata::SubstitutionTable table_;
    mutable ServicePlatform platform_;
    mutable std::mutex mutex_;
    mutable std::condition_variable returned_;
    mutable std::vector<std::unique_ptr<Reader>> idle_; // the latest used one last
};

} // namespace quorvex::service
