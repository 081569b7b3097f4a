#include "quorvex/csv.h"

#include "support/error.h"
#include "support/text.h"

#include <algorithm>
#include <array>

namespace quorvex::cli {
namespace {

constexpr std::size_t kBlock = 1U << 20;

// The candidate that occurs most often outside quotes in the first line.
char LikelySeparator(std::string_view block) {
    constexpr std::string_view kCandidates = ",;\t|";
    std::array<std::size_t, kCandidates.size()> counts{};
    bool quoted = false;
    for (const char c : block) {
        if (c == '"') quoted = !quoted;
        if (!quoted && (c == '\n' || c == '\r')) break;
        const std::size_t at = kCandidates.find(c);
        if (!quoted && at != std::string_view::npos) ++counts[at];
    }
    return kCandidates[static_cast<std::size_t>(std::max_element(counts.begin(), counts.end()) - counts.begin())];
}

// Without a character that the end of the block may have cut in two.
std::string_view WholeCharacters(std::string_view block) {
    std::size_t end = block.size();
    while (end > 0 && block.size() - end < 4 && (static_cast<unsigned char>(block[end - 1]) & 0xC0U) == 0x80) --end;
    if (end > 0 && (static_cast<unsigned char>(block[end - 1]) & 0xC0U) == 0xC0) --end;
    return block.substr(0, end);
}

} // namespace

CsvReader::CsvReader(std::istream& input, char separator, std::optional<bool> utf8) : input_(input) {
    Fill();
    DetectFormat(separator, utf8);
}

void CsvReader::DetectFormat(char separator, std::optional<bool> utf8) {
    if (pending_.starts_with("\xFF\xFE") || pending_.starts_with("\xFE\xFF")) {
        throw support::Error(support::kErrorBadFile, L"the file is UTF-16; save it as \"CSV UTF-8\"");
    }
    if (pending_.starts_with(kByteOrderMark)) {
        format_.byteOrderMark = true;
        pending_.erase(0, kByteOrderMark.size());
    }
    const std::string_view block = ended_ ? std::string_view(pending_) : WholeCharacters(pending_);
    format_.utf8 = format_.byteOrderMark || utf8.value_or(support::IsValidUtf8(block));
    format_.separator = separator != 0 ? separator : LikelySeparator(block);
}

bool CsvReader::Fill() {
    if (ended_) return false;
    const std::size_t had = pending_.size();
    pending_.resize(had + kBlock);
    input_.read(pending_.data() + had, static_cast<std::streamsize>(kBlock));
    const auto got = static_cast<std::size_t>(input_.gcount());
    pending_.resize(had + got);
    bytesRead_ += got;
    if (input_.bad()) throw support::Error(support::kErrorPathAccess, L"the file cannot be read to its end");
    ended_ = got < kBlock;
    return got > 0;
}

bool CsvReader::FindRowEnd(std::size_t begin, CsvBatch::Span& row, std::size_t& next) {
    std::size_t at = std::max(begin, scanned_);
    for (; at < pending_.size(); ++at) {
        const char c = pending_[at];
        if (state_ == State::Quoted) {
            if (c == '"') state_ = State::QuoteClosed;
        } else if (c == '"' && state_ != State::Plain) {
            state_ = State::Quoted; // a field begins, or the quote before this one was the first of a doubled one
        } else if (c == '\n' || c == '\r') {
            // Whether a CR is followed by LF is seen only with the next byte.
            if (c == '\r' && at + 1 == pending_.size() && !ended_) break;
            row = {begin, at};
            next = at + (c == '\r' && at + 1 < pending_.size() && pending_[at + 1] == '\n' ? 2 : 1);
            scanned_ = next;
            state_ = State::FieldStart;
            return true;
        } else {
            state_ = c == format_.separator ? State::FieldStart : State::Plain;
        }
    }
    scanned_ = at;
    if (at - begin > kLongestRow) {
        throw support::Error(support::kErrorBadFile, L"row " + std::to_wstring(rowsRead_ + 1) +
                                                         L" is longer than 16 MB; is a quote never closed?");
    }
    return false;
}

bool CsvReader::ReadHeader(std::vector<std::string>& names) {
    CsvBatch::Span row;
    std::size_t next = 0;
    while (!FindRowEnd(0, row, next)) {
        if (Fill()) continue;
        if (pending_.empty()) return false;
        row = {0, pending_.size()};
        next = pending_.size();
        scanned_ = next;
        break;
    }
    headerRow_ = pending_.substr(row.begin, row.end - row.begin);
    if (next > row.end) format_.lineEnd = pending_.substr(row.end, next - row.end);
    pending_.erase(0, next);
    scanned_ -= next;
    SplitCsvRow(headerRow_, format_.separator, names);
    return true;
}

bool CsvReader::Next(CsvBatch& batch, std::size_t maxRows) {
    batch.rows.clear();
    batch.firstRow = rowsRead_;
    batch.unclosedQuote = false;
    std::size_t begin = 0;
    while (batch.rows.size() < maxRows) {
        CsvBatch::Span row;
        std::size_t next = 0;
        if (FindRowEnd(begin, row, next)) {
            batch.rows.push_back(row);
            begin = next;
            ++rowsRead_;
        } else if (!Fill()) {
            break;
        }
    }
    if (ended_ && batch.rows.size() < maxRows && begin < pending_.size()) { // a last row without a line end
        batch.rows.push_back({begin, pending_.size()});
        batch.unclosedQuote = state_ == State::Quoted;
        begin = pending_.size();
        scanned_ = begin;
        ++rowsRead_;
    }
    batch.bytes.assign(pending_, 0, begin);
    pending_.erase(0, begin);
    scanned_ -= begin;
    return !batch.rows.empty();
}

void SplitCsvRow(std::string_view row, char separator, std::vector<std::string>& fields) {
    std::size_t count = 0;
    std::size_t at = 0;
    for (;;) {
        if (fields.size() <= count) fields.emplace_back();
        std::string& field = fields[count++];
        field.clear();
        bool quoted = at < row.size() && row[at] == '"';
        while (quoted) {
            const std::size_t close = std::min(row.find('"', at + 1), row.size());
            field.append(row.substr(at + 1, close - at - 1));
            at = std::min(close + 1, row.size());
            quoted = at < row.size() && row[at] == '"'; // doubled: one of them belongs to the field
            if (quoted) field.push_back('"');
        }
        const std::size_t end = std::min(row.find(separator, at), row.size());
        field.append(row.substr(at, end - at));
        if (end == row.size()) break;
        at = end + 1;
    }
    fields.resize(count);
}

void AppendCsvField(std::string& row, std::string_view field, char separator) {
    const bool plain =
        field.find(separator) == std::string_view::npos && field.find_first_of("\"\r\n") == std::string_view::npos;
    if (plain) {
        row.append(field);
        return;
    }
    row.push_back('"');
    for (const char c : field) {
        if (c == '"') row.push_back('"');
        row.push_back(c);
    }
    row.push_back('"');
}

std::wstring CsvText(std::string_view bytes, const CsvFormat& format) {
    return format.utf8 && support::IsValidUtf8(bytes) ? support::FromUtf8(bytes) : support::FromAnsi(bytes);
}

std::string CsvBytes(std::wstring_view text, const CsvFormat& format) {
    return format.utf8 ? support::ToUtf8(text) : support::ToAnsi(text);
}

std::optional<std::size_t> FindColumn(const std::vector<std::string>& names, std::wstring_view name,
                                      const CsvFormat& format) {
    const std::wstring wanted = support::UpperCase(support::Trim(name));
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (support::UpperCase(support::Trim(CsvText(names[i], format))) == wanted) return i;
    }
    return std::nullopt;
}

} // namespace quorvex::cli
