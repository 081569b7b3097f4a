#include "service/forwarded.h"
#include "service/http/head.h"
#include "service/query.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// A request as it comes over the wire, in two pieces: what the server makes of it, and what the pages do.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvex::service;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const http::Limits limits;
    http::Head head(limits);
    std::size_t used = 0;
    http::Head::Progress progress;
    for (const std::size_t end : {size / 2, size}) {
        if (end == used) continue;
        progress = head.Put(bytes.substr(used, end - used));
        used += progress.used;
        if (used > end) std::abort();
        if (progress.rejection != 0 || progress.done) break;
    }
    if (!progress.done || progress.rejection != 0) return 0;
    http::Request request = head.TakeRequest();
    request.client = "127.0.0.1";
    if (request.target.size() > limits.targetBytes) std::abort();
    PathOf(request.target);
    const Query query(request.target, {"datakey", "postcode", "com", "id"});
    ForwardedOf(request, accounts::Networks("127.0.0.1"));
    return 0;
}
