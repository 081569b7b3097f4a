#pragma once

#include "service/accounts/accounts.h"
#include "service/data_source.h"
#include "service/query.h"
#include "service/reply.h"
#include "service/update_folder.h"

#include <filesystem>
#include <functional>
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

struct PageRequest {
    std::string target; // path and query as they came
    std::string base;   // scheme, host and port under which the caller knows the service
    std::string client; // the caller's address
    std::string id;     // of its own for each request; charged once
};

struct PageAnswer {
    int status = 200;
    std::string contentType{};
    std::string body{};
    std::optional<std::filesystem::path> file{}; // sent in the place of the body
    bool retry = false;                          // the same request may succeed in a moment
    std::string page = "other";                  // for logs
    std::string result = "ok";                   // for logs: ok, none, refused, busy, error
    std::string account{};                       // the key's short name
    int credits = 0;                             // taken
};

// What lies at an address of the service. Any number of threads may ask at a time.
class Pages {
  public:
    Pages(const DataSource& data, accounts::Accounts& accounts, const UpdateFolder& updates, PageSettings settings)
        : data_(data), accounts_(accounts), updates_(updates), settings_(std::move(settings)) {}

    // done may be called on another thread, when the credit for the answer was taken.
    using Done = std::function<void(PageAnswer)>;
    void Get(const PageRequest& request, Done done) const;

  private:
    struct Lookup;
    static const Lookup* FindLookup(const std::string& path);
    void Charged(const Lookup& lookup, const PageRequest& request, const Query& query, Done done) const;
    PageAnswer Rendered(const Lookup& lookup, const DataSet& set, const Reply& reply,
                        const accounts::Accounts::Standing& standing) const;
    static Reply SearchAdvanced(const DataSet& set, const Query& query);
    std::wstring MapAddress(const DataSet& set, const Query& query) const;
    static PageAnswer Lists(const DataSet& set, const Query& query);
    std::wstring UpdateList(const Query& query, const std::string& base) const;

    const DataSource& data_;
    accounts::Accounts& accounts_;
    const UpdateFolder& updates_;
    PageSettings settings_;
};

// A refusal with status 503, for a caller who may try again in a moment.
PageAnswer BusyAnswer(const std::wstring& message);

} // namespace quorvex::service
