#pragma once

#include "service/http/server.h"

#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::service::http {

// The head of one request as it comes in. What could be read in two ways is rejected, never guessed at: both lengths,
// several hosts, a body.
class Head {
  public:
    explicit Head(const Limits& limits);

    struct Progress {
        std::size_t used = 0; // bytes taken from the input
        bool done = false;
        int rejection = 0; // the status to answer with; the connection cannot go on
    };
    // Gives all bytes that came and were not used yet.
    Progress Put(std::string_view bytes);

    // Once it is done.
    Request TakeRequest();
    bool KeepsAlive() const;

  private:
    int RejectionOf(const boost::system::error_code& error) const;
    int BodyRejection() const;
    int Unfit() const;

    boost::beast::http::request_parser<boost::beast::http::empty_body> parser_;
    std::size_t targetBytes_;
};

// Status line and fields of an answer. length: none for an answer that ends with the connection.
std::string HeadText(const Response& response, std::optional<std::uint64_t> length, bool keepsAlive);

} // namespace quorvex::service::http
