#pragma once

#include "service/accounts/networks.h"
#include "service/http/message.h"

#include <string>

namespace quorvex::service {

// Who asks, and under which address the service is known to him.
struct Forwarded {
    std::string client;
    std::string base; // scheme, host and port; empty if the request does not say
    std::string id;   // of this request, however often a proxy sends it
};

// What trusted proxies say of the caller counts; everybody else speaks for himself.
Forwarded ForwardedOf(const http::Request& request, const accounts::Networks& proxies);

} // namespace quorvex::service
