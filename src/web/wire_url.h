#pragma once

#include <string>
#include <string_view>

namespace quorvex::web {

// The URL in the form in which it may stand in a request: blanks, control characters and non-ASCII characters (as UTF-8) become
// "%XX". Everything else goes out as given: "&", "%", "+" and "=" are never touched, so a text that the caller has escaped is
// not escaped again. A "#" in the query is part of a value (callers do not escape values) and becomes "%23", since servers would
// drop all that follows it; a "#" before the query begins a fragment, which is not sent. Scheme and host stay as they are.
std::wstring EscapeForWire(std::wstring_view url);

} // namespace quorvex::web
