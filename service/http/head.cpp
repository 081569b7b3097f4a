#include "service/http/head.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/error.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace quorvex::service::http {
namespace {

namespace beast = boost::beast::http;

// The date of answers; made once a second by each thread.
const std::string& DateText() {
    thread_local std::time_t made = 0;
    thread_local std::string text;
    const std::time_t now = std::time(nullptr);
    if (now == made) return text;
    static constexpr std::array<const char*, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::tm utc{};
    gmtime_r(&now, &utc);
    std::array<char, 40> line{};
    const int length = std::snprintf(line.data(), line.size(), "%s, %02d %s %04d %02d:%02d:%02d GMT",
                                     kDays[static_cast<std::size_t>(utc.tm_wday)], utc.tm_mday,
                                     kMonths[static_cast<std::size_t>(utc.tm_mon)], utc.tm_year + 1900, utc.tm_hour,
                                     utc.tm_min, utc.tm_sec);
    text.assign(line.data(), static_cast<std::size_t>(length));
    made = now;
    return text;
}

} // namespace

Head::Head(const Limits& limits) : targetBytes_(limits.targetBytes) {
    parser_.header_limit(static_cast<std::uint32_t>(limits.headerBytes));
    parser_.body_limit(std::uint64_t{0});
}

Head::Progress Head::Put(std::string_view bytes) {
    Progress progress;
    boost::system::error_code error;
    progress.used = parser_.put(boost::asio::buffer(bytes.data(), bytes.size()), error);
    if (error == beast::error::need_more) return progress;
    if (error) {
        progress.rejection = RejectionOf(error);
    } else if (parser_.is_header_done()) {
        progress.done = true;
        progress.rejection = Unfit();
    }
    return progress;
}

int Head::RejectionOf(const boost::system::error_code& error) const {
    if (error == beast::error::header_limit) return parser_.get().target().empty() ? 414 : 431;
    if (error == beast::error::body_limit || error == beast::error::unexpected_body) return BodyRejection();
    if (error == beast::error::bad_version) return 505;
    return 400;
}

int Head::BodyRejection() const {
    const beast::verb method = parser_.get().method();
    return method == beast::verb::get || method == beast::verb::head ? 413 : 405;
}

// What the parser lets pass and this service does not.
int Head::Unfit() const {
    const auto& message = parser_.get();
    if (message.target().size() > targetBytes_) return 414;
    const auto hosts = message.equal_range(beast::field::host);
    const auto count = std::distance(hosts.first, hosts.second);
    if (count > 1 || (count == 0 && message.version() > 10)) return 400;
    if (message.version() > 11) return 505;
    // Pages are read with GET: a body has no meaning, and skipping it wrongly would make a request of it.
    if (!parser_.is_done() || message.count(beast::field::transfer_encoding) > 0) return BodyRejection();
    if (message.count(beast::field::expect) > 0) return 417;
    return 0;
}

Request Head::TakeRequest() {
    const auto& message = parser_.get();
    Request request;
    request.method = std::string(message.method_string());
    request.target = std::string(message.target());
    request.headers.reserve(8);
    for (const auto& field : message)
        request.headers.emplace_back(std::string(field.name_string()), std::string(field.value()));
    return request;
}

bool Head::KeepsAlive() const {
    return parser_.get().keep_alive();
}

std::string HeadText(const Response& response, std::optional<std::uint64_t> length, bool keepsAlive) {
    std::string text;
    text.reserve(256 + (response.body.size() < 16 * 1024 ? response.body.size() : 0));
    text.append("HTTP/1.1 ").append(std::to_string(response.status)).append(1, ' ').append(Phrase(response.status));
    text.append("\r\nDate: ").append(DateText());
    if (!response.contentType.empty()) text.append("\r\nContent-Type: ").append(response.contentType);
    if (length && response.status != 304) text.append("\r\nContent-Length: ").append(std::to_string(*length));
    for (const auto& [name, value] : response.headers) text.append("\r\n").append(name).append(": ").append(value);
    return text.append(keepsAlive ? "\r\nConnection: keep-alive\r\n\r\n" : "\r\nConnection: close\r\n\r\n");
}

} // namespace quorvex::service::http
