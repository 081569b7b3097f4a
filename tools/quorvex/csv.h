#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::cli {

// CSV as spreadsheets write it: fields may be quoted, a quoted field may hold separators, line breaks and doubled
// quotes. A quote inside an unquoted field is an ordinary character.

// U+FEFF as UTF-8.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

struct CsvFormat {
    char separator = ',';
    bool utf8 = true; // false: windows-1252
    bool byteOrderMark = false;
    std::string lineEnd = "\n";
};

// Rows in a batch of a reader that does nothing slow with them.
inline constexpr std::size_t kCsvRowsAtOnce = 4096;

// Whole rows in the bytes of the file, line ends left out.
struct CsvBatch {
    struct Span {
        std::size_t begin = 0;
        std::size_t end = 0;
    };
    std::string bytes;
    std::vector<Span> rows;
    std::uint64_t firstRow = 0; // number of rows that precede these, the header not counted
    bool unclosedQuote = false; // the file ended inside the last row's quotes

    std::string_view Row(std::size_t i) const {
        return std::string_view(bytes).substr(rows[i].begin, rows[i].end - rows[i].begin);
    }
};

// Reads a stream of any length in batches of whole rows; memory holds one batch. Throws support::Error when reading
// fails, for UTF-16, and for a row of more than kLongestRow bytes (a quote that is never closed).
class CsvReader {
  public:
    static constexpr std::size_t kLongestRow = 16U << 20;

    // separator 0 and no encoding: taken from the first block.
    CsvReader(std::istream& input, char separator, std::optional<bool> utf8);

    // False if the stream is empty. Called once, before the batches.
    bool ReadHeader(std::vector<std::string>& names);
    const CsvFormat& Format() const { return format_; }
    // The bytes of the header row without its line end.
    const std::string& HeaderRow() const { return headerRow_; }

    // The next rows, at most maxRows; false at the end.
    bool Next(CsvBatch& batch, std::size_t maxRows);
    std::uint64_t BytesRead() const { return bytesRead_; }

  private:
    bool Fill();
    // Finds the end of the row at begin in pending_; false when more bytes are needed.
    bool FindRowEnd(std::size_t begin, CsvBatch::Span& row, std::size_t& next);
    void DetectFormat(char separator, std::optional<bool> utf8);

    std::istream& input_;
    CsvFormat format_;
    std::string pending_;
    std::string headerRow_;
    std::uint64_t rowsRead_ = 0;
    std::uint64_t bytesRead_ = 0;
    bool ended_ = false;
    // Where the search for a row's end goes on when more bytes have come.
    enum class State { FieldStart, Plain, Quoted, QuoteClosed };
    std::size_t scanned_ = 0;
    State state_ = State::FieldStart;
};

// The fields of a row, unquoted, as bytes. The vector's strings are reused.
void SplitCsvRow(std::string_view row, char separator, std::vector<std::string>& fields);
// Appends a field, quoted if it has to be.
void AppendCsvField(std::string& row, std::string_view field, char separator);

// Bytes of the file as text and back; bytes that are not valid UTF-8 are read as windows-1252 whatever the file says.
std::wstring CsvText(std::string_view bytes, const CsvFormat& format);
std::string CsvBytes(std::wstring_view text, const CsvFormat& format);

// Position of a column by its name, case ignored; nothing if there is none.
std::optional<std::size_t> FindColumn(const std::vector<std::string>& names, std::wstring_view name,
                                      const CsvFormat& format);

} // namespace quorvex::cli
