#include "storage/journal.h"

#include "jet/error.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <random>

namespace jet {
namespace {

constexpr std::array<Byte, 8> kMagic = {'Q', 'J', 'E', 'T', 'J', 'R', 'N', '2'};
constexpr std::size_t kHeaderSize = 64;
constexpr std::size_t kRecordSize = 8 + kPageSize + 8;
constexpr std::size_t kRecordsPerWrite = 64;

// Offsets in a segment header.
constexpr std::size_t kSalt = 8;
constexpr std::size_t kSegment = 16;
constexpr std::size_t kRecords = 20;
constexpr std::size_t kOldPages = 24;
constexpr std::size_t kIdentity = 32;
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
};

std::optional<Segment> ReadSegment(File& journal, std::uint64_t offset, std::uint64_t identity) {
    std::array<Byte, kHeaderSize> header;
    if (journal.ReadAt(offset, header) != kHeaderSize) return std::nullopt;
    if (!std::equal(kMagic.begin(), kMagic.end(), header.begin())) return std::nullopt;
    const ByteView covered(header.data(), kHeaderSum);
    if (Load64(header.data() + kHeaderSum) != Checksum(0, covered)) return std::nullopt;
    if (Load64(header.data() + kIdentity) != identity) return std::nullopt;
    return Segment{Load64(header.data() + kSalt), Load32(header.data() + kSegment), Load32(header.data() + kRecords),
                   Load32(header.data() + kOldPages)};
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

/// Runs through all whole segments; returns the old page count, or nothing when not even the first is whole.
std::optional<PageNo> ReadJournal(File& journal, std::uint64_t identity, const RecordAction& action) {
    std::optional<PageNo> oldPages;
    std::uint64_t salt = 0;
    std::uint64_t offset = 0;
    for (std::uint32_t number = 0;; ++number) {
        const auto segment = ReadSegment(journal, offset, identity);
        if (!segment || segment->number != number || (number > 0 && segment->salt != salt)) break;
        offset += kHeaderSize;
        // Checked whole before anything of it is used.
        if (!ReadRecords(journal, offset, *segment, nullptr)) break;
        if (action) ReadRecords(journal, offset, *segment, action);
        salt = segment->salt;
        oldPages = segment->oldPages;
        offset += std::uint64_t{segment->records} * kRecordSize;
    }
    return oldPages;
}

std::uint64_t NewSalt() {
    std::random_device source;
    return std::uint64_t{source()} << 32 | source();
}

} // namespace

std::filesystem::path Journal::PathFor(const std::filesystem::path& database) {
    // Appended as it is: a conversion of narrow text would bring in the library's locales.
    constexpr std::string_view kSuffix = ".journal";
    std::filesystem::path::string_type name = database.native();
    name.append(kSuffix.begin(), kSuffix.end());
    return name;
}

std::uint64_t Journal::Identity(File& database) {
    std::array<Byte, kPageSize> header{};
    database.ReadAt(0, header);
    return Checksum(1, header);
}

void Journal::OpenFile() {
    if (!file_) file_ = storage_.Open(path_, OpenMode::kSideFile);
}

void Journal::Append(File& database, std::uint64_t identity, PageNo oldPageCount, std::span<const PageNo> pages) {
    OpenFile();
    if (segments_ == 0) {
        if (salt_ == 0) salt_ = NewSalt();
        ++salt_;
        end_ = 0;
    }
    Bytes buffer(kHeaderSize + std::min(kRecordsPerWrite, pages.size()) * kRecordSize);
    std::copy(kMagic.begin(), kMagic.end(), buffer.begin());
    Store64(buffer.data() + kSalt, salt_);
    Store32(buffer.data() + kSegment, segments_);
    Store32(buffer.data() + kRecords, static_cast<std::uint32_t>(pages.size()));
    Store32(buffer.data() + kOldPages, oldPageCount);
    Store64(buffer.data() + kIdentity, identity);
    Store64(buffer.data() + kHeaderSum, Checksum(0, ByteView(buffer).first(kHeaderSum)));
    std::uint64_t offset = end_;
    std::size_t start = kHeaderSize;
    for (std::size_t done = 0; done < pages.size() || start > 0;) {
        const std::size_t count = std::min(kRecordsPerWrite, pages.size() - done);
        for (std::size_t i = 0; i < count; ++i) {
            Byte* record = buffer.data() + start + i * kRecordSize;
            Store64(record, pages[done + i]);
            const ByteSpan bytes(record + 8, kPageSize);
            if (database.ReadAt(std::uint64_t{pages[done + i]} * kPageSize, bytes) != kPageSize) {
                throw Error(ErrorCode::kIo, "A page to be saved could not be read");
            }
            Store64(record + kRecordSize - 8, Checksum(salt_, ByteView(record, kRecordSize - 8)));
        }
        const ByteView written = ByteView(buffer).first(start + count * kRecordSize);
        file_->WriteAt(offset, written);
        offset += written.size();
        done += count;
        start = 0;
    }
    file_->Flush();
    end_ = offset;
    ++segments_;
}

void Journal::Invalidate() {
    if (file_) {
        const std::array<Byte, kHeaderSize> nothing{};
        file_->WriteAt(0, nothing);
        file_->Flush();
    }
    segments_ = 0;
}

void Journal::Remove() noexcept {
    file_.reset();
    segments_ = 0;
    try {
        storage_.Remove(path_);
    } catch (const std::exception&) {
        return;
    }
}

bool Journal::IsHot(Storage& storage, const std::filesystem::path& path, File& database) {
    const auto journal = storage.Open(path, OpenMode::kSideFileRead);
    return ReadJournal(*journal, Identity(database), nullptr).has_value();
}

void Journal::Replay(File& database, std::uint64_t identity) {
    OpenFile();
    const auto oldPages = ReadJournal(*file_, identity, [&](PageNo page, ByteView bytes) {
        database.WriteAt(std::uint64_t{page} * kPageSize, bytes);
    });
    if (oldPages) {
        const std::uint64_t size = std::uint64_t{*oldPages} * kPageSize;
        if (database.Size() != size) database.Resize(size);
        database.Flush();
    }
    Invalidate();
}

} // namespace jet
