#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::http {

// A web address taken apart, in the form in which it goes out.
struct WireUrl {
    bool secure = false;    // https
    std::wstring host;      // an IPv6 address keeps its brackets
    std::uint16_t port = 0; // the scheme's own when none is given
    std::wstring target;    // path and query, escaped; begins with "/"
};

// Nothing when the text is no http or https address. A user name before the host is dropped.
std::optional<WireUrl> SplitUrl(std::wstring_view url);

// Path and query as they may stand in a request: blanks, control characters and non-ASCII characters (as UTF-8) become
// "%XX". Everything else goes out as given: "&", "%", "+" and "=" are never touched, so what the caller has escaped is
// not escaped again. A "#" in the query is part of a value (callers do not escape values) and becomes "%23", since
// servers would drop all that follows it; a "#" before the query begins a fragment, which is not sent.
std::wstring EscapeTarget(std::wstring_view target);

} // namespace quorvex::http
