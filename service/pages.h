#pragma once

#include "service/accounts.h"
#include "service/address_index.h"
#include "service/local_data.h"
#include "service/query.h"
#include "service/reply.h"
#include "service/update_folder.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::service {

// Addresses handed out as they are, or made from a postcode's place.
struct PageSettings {
    std::wstring accountPage;
    std::wstring popMessage; // shown to the user with every lookup
    // "{postcode}", "{latitude}", "{longitude}", "{zoom}" and "{words}" are filled in, percent-encoded.
    std::wstring mapUrl =
        L"https://www.openstreetmap.org/?mlat={latitude}&mlon={longitude}#map={zoom}/{latitude}/{longitude}";
    std::wstring directoryUrl = L"https://www.openstreetmap.org/search?query={words}%20near%20{postcode}";
};

struct PageAnswer {
    int status = 200;
    std::string contentType;
    std::string body;
    std::optional<std::filesystem::path> file; // sent in the place of the body
};

// What stands at an address of the service. Any number of threads may ask at a time.
class Pages {
  public:
    Pages(const LocalData& data, const AddressIndex& index, Accounts& accounts, const UpdateFolder& updates,
          PageSettings settings)
        : data_(data), index_(index), accounts_(accounts), updates_(updates), settings_(std::move(settings)) {}

    // target: path and query as they came. base: scheme, host and port under which the caller knows the service.
    PageAnswer Get(std::string_view target, const std::string& base) const;

  private:
    template <typename Lookup>
    std::wstring Charged(const Query& query, Lookup lookup) const;
    std::optional<std::wstring> Document(const std::string& path, std::string_view target,
                                         const std::string& base) const;
    Reply SearchAdvanced(const Query& query) const;
    std::wstring MapAddress(const Query& query) const;
    std::wstring Lookups(const Query& query) const;
    std::wstring UpdateList(const Query& query, const std::string& base) const;

    const LocalData& data_;
    const AddressIndex& index_;
    Accounts& accounts_;
    const UpdateFolder& updates_;
    PageSettings settings_;
};

} // namespace quorvex::service
