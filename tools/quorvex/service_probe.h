#pragma once

#include <string>

namespace quorvex::cli {

// One request made to learn how it goes.
struct Probe {
    std::wstring cause;  // why there was no answer; empty if there was one
    std::wstring advice; // what to do about it
    int status = 0;
    long milliseconds = 0;
    std::string body;
    bool hasDate = false;
    long long clockAhead = 0; // seconds by which this clock is ahead of the server's
};

// GET of the URL with the proxy that lookups would use. Nothing throws.
Probe ProbeUrl(const std::wstring& url, int limitSeconds);

// The proxy that the file in the current directory names; empty without one. Only Windows hosts read that file.
std::wstring NamedProxy();

} // namespace quorvex::cli
