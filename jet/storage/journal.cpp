#include "storage/journal.h"

#include "jet/error.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace jet {
namespace {

constexpr std::array<Byte, 8> kMagic = {'Q', 'J', 'E', 'T', 'J', 'R', 'N', '3'};
constexpr std::size_t kHeaderSize = 64;
constexpr std::size_t kRecordSize = 8 + kPageSize + 8;
constexpr std::size_t kRecordsPerWrite = 64;

// Offsets in a segment header.
constexpr std::size_t kSalt = 8;
constexpr std::size_t kSegment = 16;
constexpr std::size_t kRecords = 20;
constexpr std::size_t kOldPages = 24;
constexpr std::size_t kNewPages = 28;
constexpr std::size_t kIdentity = 32;
constexpr std::size_t kStampBefore = 40;
constexpr std::size_t kStampAfter = 48;
constexpr std::size_t kHeaderSum = 56;

std::uint64_t Fold(std::uint64_t h, std::uint64_t word) {
    h = (h ^ word) * 0xFF51AFD7ED558CCDU;
    return h ^ h >> 32;
}

/// Multiply-and-fold over 8-byte words in four strands, which a processor works on at the same time; `data` is a
/// multiple of 8 long. Guards against torn writes, not against malice.
std::uint64_t Checksum(std::uint64_t seed, ByteView data) {
    std::array<std::uint64_t, 4> strands;
    for (std::size_t k = 0; k < strands.size(); ++k) strands[k] = seed ^ (0x9E3779B97F4A7C15U * (k + 1));
    std::size_t i = 0;
    for (; i + 32 <= data.size(); i += 32) {
        for (std::size_t k = 0; k < strands.size(); ++k) {
            strands[k] = Fold(strands[k], Load64(data.data() + i + 8 * k));
        }
    }
    std::uint64_t h = seed;
    for (const std::uint64_t strand : strands) h = Fold(h, strand);
    for (; i + 8 <= data.size(); i += 8) h = Fold(h, Load64(data.data() + i));
    return h;
}

struct Segment {
    std::uint64_t salt;
    std::uint32_t number;
    std::uint32_t records;
    PageNo oldPages;
    PageNo newPages;
    std::uint64_t identity;
    std::uint64_t stampBefore;
    std::uint64_t stampAfter;
};

std::optional<Segment> ReadSegment(File& journal, std::uint64_t offset) {
    std::array<Byte, kHeaderSize> header;
    if (journal.ReadAt(offset, header) != kHeaderSize) return std::nullopt;
    const Byte* const at = header.data();
    if (!std::equal(kMagic.begin(), kMagic.end(), at)) return std::nullopt;
    if (Load64(at + kHeaderSum) != Checksum(0, ByteView(at, kHeaderSum))) return std::nullopt;
    return Segment{Load64(at + kSalt),     Load32(at + kSegment),  Load32(at + kRecords),     Load32(at + kOldPages),
                   Load32(at + kNewPages), Load64(at + kIdentity), Load64(at + kStampBefore), Load64(at + kStampAfter)};
}

using RecordAction = std::function<void(PageNo, ByteView)>;

/// Runs through the records of a segment; false when one of them is not whole.
bool ReadRecords(File& journal, std::uint64_t offset, const Segment& segment, const RecordAction& action) {
    Bytes buffer(kRecordSize * kRecordsPerWrite);
    for (std::uint32_t done = 0; done < segment.records;) {
        const std::size_t count = std::min<std::size_t>(kRecordsPerWrite, segment.records - done);
        const ByteSpan part(buffer.data(), count * kRecordSize);
        if (journal.ReadAt(offset, part) != part.size()) return false;
        for (std::size_t i = 0; i < count; ++i) {
            const ByteView record = part.subspan(i * kRecordSize, kRecordSize);
            const ByteView covered = record.first(kRecordSize - 8);
            if (Load64(record.data() + kRecordSize - 8) != Checksum(segment.salt, covered)) return false;
            const PageNo page = Load32(record.data());
            if (page >= segment.oldPages) return false;
            if (action) action(page, record.subspan(8, kPageSize));
        }
        offset += part.size();
        done += static_cast<std::uint32_t>(count);
    }
    return true;
}

/// Runs through all whole segments; returns the last of them, or nothing if not even the first is whole.
std::optional<Segment> ReadJournal(File& journal, const RecordAction& action) {
    std::optional<Segment> last;
    std::uint64_t offset = 0;
    for (std::uint32_t number = 0;; ++number) {
        const auto segment = ReadSegment(journal, offset);
        if (!segment || segment->number != number || (last && segment->salt != last->salt)) break;
        offset += kHeaderSize;
        // Checked whole before anything of it is used.
        if (!ReadRecords(journal, offset, *segment, nullptr)) break;
        if (action) ReadRecords(journal, offset, *segment, action);
        const PageNo newPages = std::max(segment->newPages, last ? last->newPages : 0);
        last = segment;
        last->newPages = newPages;
        offset += std::uint64_t{segment->records} * kRecordSize;
    }
    return last;
}

/// Whether the database is in the state that the journal was made from, or between it and the next one.
bool Matches(const Segment& last, File& database) {
    const std::uint64_t size = database.Size();
    if (last.oldPages == 0 || size < std::uint64_t{last.oldPages} * kPageSize) return false;
    if (size > std::uint64_t{last.newPages} * kPageSize) return false;
    const FileState state = FileState::Of(database);
    return state.identity == last.identity && (state.stamp == last.stampBefore || state.stamp == last.stampAfter);
}

/// A transaction's stamp, never 0.
std::uint64_t StampOf(std::uint64_t salt) {
    constexpr std::uint64_t kSeed = 0x9E3779B97F4A7C15U;
    return Fold(kSeed, salt) | 1;
}

std::uint64_t NewSalt() {
    std::random_device source;
    return std::uint64_t{source()} << 32 | source();
}

/// Appended as it is: a conversion of narrow text would bring in the library's locales.
Path WithSuffix(const Path& path, std::string_view suffix) {
    Path::Text name = path.native();
    name.append(suffix.begin(), suffix.end());
    return name;
}

} // namespace

Path Journal::PathFor(const Path& database) {
    return WithSuffix(database, ".journal");
}

FileState FileState::Of(File& database) {
    std::array<Byte, kPageSize> header{};
    if (database.ReadAt(0, header) != kPageSize) throw Error(ErrorCode::kIo, "The database has no whole header page");
    FileState state;
    state.stamp = Load64(header.data() + kHeaderStamp);
    Store64(header.data() + kHeaderStamp, 0);
    state.identity = Checksum(1, header);
    return state;
}

File& Journal::OpenFile() {
    if (!file_) file_ = storage_.Open(path_, OpenMode::kSideFile);
    return *file_;
}

File& Journal::OpenFileAgain() {
    file_.reset();
    return OpenFile();
}

std::uint64_t Journal::NextStamp() {
    if (salt_ == 0) salt_ = NewSalt();
    return StampOf(salt_ + 1);
}

void Journal::Append(File& database, const FileState& before, PageNo oldPageCount, PageNo newPageCount,
                     std::span<const PageNo> pages) {
    OpenFile();
    std::array<Byte, kHeaderSize> header{};
    Byte* const at = header.data();
    if (segments_ == 0) {
        if (salt_ == 0) salt_ = NewSalt();
        ++salt_;
        end_ = 0;
    }
    std::copy(kMagic.begin(), kMagic.end(), at);
    Store64(at + kSalt, salt_);
    Store32(at + kSegment, segments_);
    Store32(at + kRecords, static_cast<std::uint32_t>(pages.size()));
    Store32(at + kOldPages, oldPageCount);
    Store32(at + kNewPages, newPageCount);
    Store64(at + kIdentity, before.identity);
    Store64(at + kStampBefore, before.stamp);
    Store64(at + kStampAfter, StampOf(salt_));
    Store64(at + kHeaderSum, Checksum(0, ByteView(at, kHeaderSum)));
    WriteRecords(database, header, pages);
    file_->Flush();
    if (!nameFlushed_) storage_.FlushNames(path_);
    nameFlushed_ = true;
    ++segments_;
}

void Journal::WriteRecords(File& database, ByteView header, std::span<const PageNo> pages) {
    Bytes buffer(kHeaderSize + std::min(kRecordsPerWrite, pages.size()) * kRecordSize);
    Bytes run(std::min(kRecordsPerWrite, pages.size()) * kPageSize); // neighbours are read together
    std::size_t runStart = 0;
    std::size_t runEnd = 0;
    std::copy(header.begin(), header.end(), buffer.begin());
    std::uint64_t offset = end_;
    std::size_t start = kHeaderSize;
    for (std::size_t done = 0; done < pages.size() || start > 0;) {
        const std::size_t count = std::min(kRecordsPerWrite, pages.size() - done);
        for (std::size_t i = 0; i < count; ++i) {
            Byte* record = buffer.data() + start + i * kRecordSize;
            Store64(record, pages[done + i]);
            if (done + i >= runEnd) {
                runStart = runEnd++;
                while (runEnd < done + count && pages[runEnd] == pages[runEnd - 1] + 1) ++runEnd;
                const ByteSpan bytes(run.data(), (runEnd - runStart) * kPageSize);
                if (database.ReadAt(std::uint64_t{pages[runStart]} * kPageSize, bytes) != bytes.size()) {
                    throw Error(ErrorCode::kIo, "A page to be saved could not be read");
                }
            }
            std::copy_n(run.data() + (done + i - runStart) * kPageSize, kPageSize, record + 8);
            Store64(record + kRecordSize - 8, Checksum(salt_, ByteView(record, kRecordSize - 8)));
        }
        const ByteView written = ByteView(buffer).first(start + count * kRecordSize);
        file_->WriteAt(offset, written);
        offset += written.size();
        done += count;
        start = 0;
    }
    end_ = offset;
}

void Journal::Invalidate(bool lasting) {
    if (file_ && file_->Size() > 0) {
        const std::array<Byte, kHeaderSize> nothing{};
        file_->WriteAt(0, nothing);
        if (lasting) file_->Flush();
    }
    segments_ = 0;
}

void Journal::Remove() noexcept {
    file_.reset();
    segments_ = 0;
    nameFlushed_ = false;
    try {
        storage_.Remove(path_);
    } catch (const std::exception&) {
        return;
    }
}

void Journal::RemoveIfEmpty() noexcept {
    try {
        if (OpenFile().Size() == 0) Remove();
    } catch (const std::exception&) {
        return;
    }
}

Journal::Finding Journal::Examine(Storage& storage, const Path& path, File& database) {
    if (!storage.Exists(path)) return Finding::kNothing;
    std::unique_ptr<File> journal;
    try {
        journal = storage.Open(path, OpenMode::kSideFileRead);
    } catch (const Error& error) {
        if (error.code() != ErrorCode::kFileNotFound) throw;
        return Finding::kNothing; // its writer has just removed it
    }
    const auto last = ReadJournal(*journal, nullptr);
    if (!last) return Finding::kNothing;
    return Matches(*last, database) ? Finding::kHot : Finding::kForeign;
}

bool Journal::LooksValid(File& journal) {
    return ReadSegment(journal, 0).has_value();
}

void Journal::Replay(File& database) {
    OpenFile();
    const auto last = ReadJournal(
        *file_, [&](PageNo page, ByteView bytes) { database.WriteAt(std::uint64_t{page} * kPageSize, bytes); });
    if (last) {
        const std::uint64_t size = std::uint64_t{last->oldPages} * kPageSize;
        if (database.Size() != size) database.Resize(size);
        database.Flush();
    }
    Invalidate(true);
}

Path Journal::SetAside(Storage& storage, const Path& path) {
    for (int number = 1;; ++number) {
        const Path aside = WithSuffix(path, ".aside" + std::to_string(number));
        if (storage.Exists(aside)) continue;
        storage.Rename(path, aside);
        storage.FlushNames(path);
        return aside;
    }
}

} // namespace jet
