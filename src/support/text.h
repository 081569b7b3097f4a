#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex::support {

// --- Conversion at the edges -----------------------------------------------------------------------------------------
// Damaged input becomes U+FFFD; nothing here throws. On platforms with 16-bit wchar_t characters above U+FFFF are
// pairs.
std::wstring FromUtf8(std::string_view bytes);
std::string ToUtf8(std::wstring_view text);
bool IsValidUtf8(std::string_view bytes);
// The system's ANSI code page; windows-1252 where there is none.
std::wstring FromAnsi(std::string_view bytes);
std::string ToAnsi(std::wstring_view text);
std::wstring FromLatin1(std::string_view bytes);
// The same on every machine, whatever its ANSI code page.
std::wstring FromWindows1252(std::string_view bytes);
// By a code page of Windows; by windows-1252 if the machine does not have it.
std::wstring FromCodePage(int codePage, std::string_view bytes);
// A reply body: by the charset that its Content-Type names, else as UTF-8 when it is valid UTF-8 with non-ASCII
// characters, else by the ANSI code page.
std::wstring DecodeReply(std::string_view body, std::string_view contentType);

// --- Case, trimming, searching ---------------------------------------------------------------------------------------
// Locale-independent; the length never changes.
std::wstring UpperCase(std::wstring_view text);
// Blanks at both ends.
std::wstring_view Trim(std::wstring_view text);
// Characters below 33 at the right end.
std::wstring_view TrimRightControl(std::wstring_view text);
// Keeps characters of code 32 and above.
std::wstring RemoveControlChars(std::wstring_view text);
// Non-overlapping, from the left, once.
std::wstring ReplaceAll(std::wstring_view text, std::wstring_view sought, std::wstring_view replacement);
std::size_t CountOccurrences(std::wstring_view text, std::wstring_view sought);
// The first width characters, padded on the right to exactly width.
std::wstring PadRight(std::wstring_view text, std::size_t width, wchar_t padChar);
// The text before the first separator (all of it when there is none); with remove it is taken off the list's front
// together with the separator.
std::wstring NextField(std::wstring& list, std::wstring_view separator, bool remove);
// A message as one log line: control characters at the right end dropped, CR made a comma, other control characters a
// blank, outer blanks trimmed, one trailing comma dropped.
std::wstring CleanLogText(std::wstring_view text);

// --- Numbers ---------------------------------------------------------------------------------------------------------
// Adds a whole number in decimal.
void AppendNumber(std::wstring& text, std::int64_t number);
// Shortest decimal text that reads back to the same double, with a point, whatever the locale; an exponent only below
// 1e-7 and from 1e21.
std::wstring NumberText(double number);
// The number with 15 significant digits: what a double holds of any decimal, without the noise of a sum's last bits.
double RoundedTo15Digits(double number);
// A whole text as a number, outer blanks allowed; throws Error (type mismatch) when it is none.
double ParseNumber(std::wstring_view text);
// True when the trimmed text is a number.
bool IsNumber(std::wstring_view text);
// The number at the text's beginning, blanks passed over; 0 when there is none.
double LeadingNumber(std::wstring_view text);

} // namespace quorvex::support
