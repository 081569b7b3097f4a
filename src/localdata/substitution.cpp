#include "localdata/substitution.h"

#include "support/characters.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <cstdint>
#include <mutex>

namespace quorvex::localdata {
namespace {

constexpr wchar_t kByteOrderMark = 0xFEFF;

wchar_t Upper(wchar_t c) {
    return support::UpperCase(std::wstring_view(&c, 1)).front();
}

[[noreturn]] void Malformed(std::size_t line, const wchar_t* reason) {
    throw support::Error(support::kErrorBadFile,
                         std::wstring(kSubstitutionFile) + L", line " + std::to_wstring(line) + L": " + reason);
}

} // namespace

SubstitutionTable::SubstitutionTable() {
    FillLow();
}

SubstitutionTable SubstitutionTable::Parse(std::string_view bytes) {
    SubstitutionTable table;
    for (std::size_t line = 1; !bytes.empty(); ++line) {
        const std::size_t end = bytes.find('\n');
        std::string_view raw = bytes.substr(0, end);
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
        if (raw.ends_with('\r')) raw.remove_suffix(1);
        if (!support::IsValidUtf8(raw)) Malformed(line, L"not valid UTF-8");
        std::wstring text = support::FromUtf8(raw);
        if (line == 1 && text.starts_with(kByteOrderMark)) text.erase(0, 1);
        if (text.size() != 2) Malformed(line, L"a line holds exactly two characters");
        table.AddLine(text[0], text[1], line);
    }
    table.FillLow();
    return table;
}

void SubstitutionTable::AddLine(wchar_t stored, wchar_t plain, std::size_t line) {
    // The files hold UTF-16: a character is one unit of it.
    const auto isPair = [](wchar_t c) {
        const auto code = static_cast<std::uint32_t>(c);
        return code > 0xFFFF || (code >= 0xD800 && code < 0xE000);
    };
    if (isPair(stored) || isPair(plain)) Malformed(line, L"a line holds exactly two characters");
    if (support::IsDigit(stored) && stored != plain) Malformed(line, L"digits stand for themselves");
    if (!plainOf_.emplace(Upper(stored), plain).second) Malformed(line, L"the stored character has a line already");
    storedOf_.emplace(plain, Upper(stored));
}

void SubstitutionTable::FillLow() {
    for (std::size_t i = 0; i < low_.size(); ++i) low_[i] = Replace(plainOf_, static_cast<wchar_t>(i));
}

wchar_t SubstitutionTable::Replace(const Map& map, wchar_t c) {
    if (support::IsDigit(c)) return c;
    const auto found = map.find(Upper(c));
    return found == map.end() ? c : found->second;
}

std::wstring SubstitutionTable::Unscramble(std::wstring_view stored) const {
    std::wstring plain(stored);
    for (wchar_t& c : plain) {
        const auto code = static_cast<std::size_t>(c);
        c = code < low_.size() ? low_[code] : Replace(plainOf_, c);
    }
    return plain;
}

std::wstring SubstitutionTable::Scramble(std::wstring_view plain) const {
    std::wstring stored(plain);
    for (wchar_t& c : stored) c = Replace(storedOf_, c);
    return stored;
}

SubstitutionTable LoadSubstitution(const std::wstring& dataFolder) {
    const std::wstring path = dataFolder + L"\\" + kSubstitutionFile;
    if (!support::FileExists(path)) return {};
    return SubstitutionTable::Parse(support::ReadFileBytes(path));
}

std::shared_ptr<const SubstitutionTable> SharedSubstitution(const std::wstring& dataFolder) {
    static std::mutex mutex;
    static std::wstring folder;
    static support::FileStamp stamp;
    static std::shared_ptr<const SubstitutionTable> table; // null: not to be relied on
    const support::FileStamp now = support::FileStampOf(dataFolder + L"\\" + kSubstitutionFile);
    {
        const std::lock_guard locked(mutex);
        if (table && stamp == now && folder == dataFolder) return table;
    }
    auto fresh = std::make_shared<const SubstitutionTable>(LoadSubstitution(dataFolder));
    const std::lock_guard locked(mutex);
    folder = dataFolder;
    stamp = now;
    table = now.Settled() ? fresh : nullptr;
    return fresh;
}

} // namespace quorvex::localdata
