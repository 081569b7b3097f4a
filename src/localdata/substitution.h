#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quorvex::localdata {

// The table that unscrambles the packed address field; it comes with the data.
inline constexpr wchar_t kSubstitutionFile[] = L"PAF_SUBSTITUTION.txt";

class SubstitutionTable {
  public:
    // Maps every character to itself.
    SubstitutionTable();

    // The contents of a table file: UTF-8, a byte order mark allowed, lines end in LF or CR LF, each line
    // exactly two characters "XY": stored X means plain Y. Lines are never trimmed, since one of the two
    // may be a blank. Throws support::Error naming the line for any other line, for a stored character given
    // twice (case ignored) and for a digit that does not map to itself.
    static SubstitutionTable Parse(std::string_view bytes);

    // The plain form of stored text and back. Digits and characters without a line pass unchanged; all others
    // are looked up in upper case. Scramble gives what Unscramble takes back for upper-case text.
    std::wstring Unscramble(std::wstring_view stored) const;
    std::wstring Scramble(std::wstring_view plain) const;

  private:
    using Map = std::unordered_map<wchar_t, wchar_t>;
    static wchar_t Replace(const Map& map, wchar_t c);
    void AddLine(wchar_t stored, wchar_t plain, std::size_t line);
    void FillLow();

    Map plainOf_;                    // by upper-case stored character
    Map storedOf_;                   // by plain character
    std::array<wchar_t, 256> low_{}; // plain form of the characters that nearly all texts consist of
};

// The table of a data folder; the identity when the folder has none. Throws support::Error for an unreadable
// or malformed file.
SubstitutionTable LoadSubstitution(const std::wstring& dataFolder);
// The same, read once for all lookups of the process until the file or the folder changes. Any thread may call it.
std::shared_ptr<const SubstitutionTable> SharedSubstitution(const std::wstring& dataFolder);

} // namespace quorvex::localdata
