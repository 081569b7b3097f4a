#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex::http {

// Why a request brought no usable reply, for the log of whoever has to find out.
struct RequestFailure {
    enum class Kind { None, Network, TimedOut, Cancelled, Cut, TooLong, Status, NotAReply };
    Kind kind = Kind::None;
    std::wstring detail;           // replaces the cause in the log, e.g. for a file that cannot be created
    std::uint32_t systemError = 0; // the system's number, 0 if it named none
    std::uint32_t status = 0;      // of the reply, 0 if none came
    std::int16_t stage = 0;        // Transport::LastState when it happened
    std::int64_t milliseconds = 0; // since the request began
};

// One line: cause, stage, the system's error, host, time and URL, the caller's key masked.
std::wstring DescribeFailure(const RequestFailure& failure, std::wstring_view url);
// The URL with the values of keys and passwords in its query replaced by "***".
std::wstring MaskedUrl(std::wstring_view url);

} // namespace quorvex::http
