#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <string_view>

namespace quorvex::service {

// The path of a request target: up to the "?", percent-decoded, in lower case.
std::string PathOf(std::string_view target);

// The values of a request target's query. The component sends values as its host gives them, unencoded but for what
// HTTP forbids; so "+" stands for itself, and an "&" that is not followed by one of the page's own names belongs to the
// value before it
// ("company=Smith & Sons&house="). Names are compared without regard to case; the first of two wins.
class Query {
  public:
    Query(std::string_view target, std::initializer_list<const char*> names);

    // Empty when it is not there. name in lower case.
    const std::wstring& operator[](const std::string& name) const;

  private:
    std::map<std::string, std::wstring> values_;
};

} // namespace quorvex::service
