#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorvex::service {

// The words of a text: upper case, cut at everything but letters and digits, apostrophes dropped ("Farmer's" is
// FARMERS).
std::vector<std::wstring> Words(std::wstring_view text);
// The same, with the abbreviations RD, CL, AV and AVE written out.
std::vector<std::wstring> StreetWords(std::wstring_view text);

// What a user gave for one field: whole words, and words that begin with what stands before a "*". All must be met, in
// any order.
class Criterion {
  public:
    enum class Kind { Text, Street };
    explicit Criterion(std::wstring_view typed, Kind kind = Kind::Text);

    bool Given() const { return !whole_.empty() || !beginnings_.empty(); }
    const std::vector<std::wstring>& Whole() const { return whole_; }
    const std::vector<std::wstring>& Beginnings() const { return beginnings_; }
    // Met by the words of a text; always when nothing was given.
    bool MetBy(const std::vector<std::wstring>& words) const;

  private:
    std::vector<std::wstring> whole_;
    std::vector<std::wstring> beginnings_;
};

} // namespace quorvex::service
