#pragma once

#include "service/accounts/accounts.h"
#include "service/data_source.h"
#include "service/http/message.h"
#include "service/metrics.h"
#include "service/pages.h"

#include <string>

namespace quorvex::service {

// The page at "/" for people: how the service does, and a field to try a lookup. Plain HTML without scripts.
class FrontPage {
  public:
    // passwordFile: its first line opens the table of keys; empty: nobody sees it. Throws support::Error.
    explicit FrontPage(const std::string& passwordFile);

    struct State {
        DataSource::Status data;
        accounts::Accounts& accounts;
        const Metrics& metrics;
        const std::string& node;
        const std::string& address;
        bool draining = false;
    };
    void Answer(const http::Request& request, const PageRequest& page, const State& state, const Pages& pages,
                const Pages::Done& done) const;

  private:
    bool MaySeeKeys(const http::Request& request) const;

    std::string password_;
};

} // namespace quorvex::service
