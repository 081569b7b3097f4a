#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::cli {

// Which premises of a postcode a house text means. Words are compared, whatever their case and punctuation: "Rose
// Cottage," is "ROSE COTTAGE", and 1 is not 12.

// A text as words: upper case, a blank on either side of each; apostrophes are dropped. Empty for a text without any.
std::wstring WordsOf(std::wstring_view text);
// The same for a house as people write it: without a leading "No" or "Number" that a number follows.
std::wstring HouseWords(std::wstring_view house);

// Positions of the premises ("organisation|sub-building|building") that the house means, by the first of these rules
// that any premise meets: a field, or the whole premise, equals the house; the premise begins with it; it holds it;
// premise and street together hold it. An empty house means them all.
std::vector<std::size_t> MatchHouse(const std::vector<std::wstring_view>& premises, std::wstring_view streetWords,
                                    std::wstring_view houseWords);

// A postcode as typed, as the local tables hold it (outward half padded to four, then the inward half). Empty unless
// the text has the shape of a UK postcode; blanks and case do not matter.
std::wstring PostcodeKey(std::wstring_view text);
// "PE13 4PZ": a key with one blank between its halves.
std::wstring WrittenPostcode(std::wstring_view key);

} // namespace quorvex::cli
