#include "zip/zip_archive.h"

#include "support/file.h"
#include "support/files.h"
#include "zip/zip_bytes.h"

#include <algorithm>
#include <zlib.h>

namespace quorvex::zip {
namespace {

constexpr std::size_t kPieceLength = std::size_t{128} << 10U;
constexpr wchar_t kUnfinishedSuffix[] = L".unpacking";
constexpr wchar_t kReplacedSuffix[] = L".replaced";

// zlib's decoder of raw deflate data.
class Inflater {
  public:
    Inflater() {
        if (inflateInit2(&stream_, -MAX_WBITS) != Z_OK) FailArchive(L"Not enough memory to unpack the archive");
    }
    ~Inflater() { inflateEnd(&stream_); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    void Feed(std::string& piece) {
        stream_.next_in = reinterpret_cast<Bytef*>(piece.data());
        stream_.avail_in = static_cast<uInt>(piece.size());
    }
    // Fills the buffer as far as the input goes; the bytes made.
    std::size_t Drain(std::string& buffer) {
        stream_.next_out = reinterpret_cast<Bytef*>(buffer.data());
        stream_.avail_out = static_cast<uInt>(buffer.size());
        const int result = inflate(&stream_, Z_NO_FLUSH);
        if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) {
            FailArchive(L"The compressed data in the archive is damaged");
        }
        finished_ = result == Z_STREAM_END;
        return buffer.size() - stream_.avail_out;
    }
    bool Finished() const { return finished_; }
    bool Hungry() const { return stream_.avail_in == 0; }

  private:
    z_stream stream_{};
    bool finished_ = false;
};

// Passes unpacked bytes on while they are within the promised size, and checks them in the end.
class CheckedTarget {
  public:
    CheckedTarget(const ZipEntry& entry, const ZipTarget& target) : entry_(entry), target_(target) {}

    void Write(std::string_view bytes) {
        if (bytes.size() > entry_.unpackedSize - size_) FailArchive(L"\"" + entry_.name + L"\" is larger than it says");
        size_ += bytes.size();
        crc_ = crc32(crc_, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size()));
        target_(bytes);
    }
    void Finish() const {
        if (size_ != entry_.unpackedSize) FailArchive(L"\"" + entry_.name + L"\" is smaller than it says");
        if (crc_ != entry_.crc) FailArchive(L"The checksum of \"" + entry_.name + L"\" is wrong");
    }

  private:
    const ZipEntry& entry_;
    const ZipTarget& target_;
    std::uint64_t size_ = 0;
    uLong crc_ = crc32(0, nullptr, 0);
};

// The files of one extraction. They are written under names of their own and take their places together: if one of
// them cannot, those that have are undone. Unfinished files are deleted with the object.
class UnfinishedFiles {
  public:
    UnfinishedFiles() = default;
    UnfinishedFiles(const UnfinishedFiles&) = delete;
    UnfinishedFiles& operator=(const UnfinishedFiles&) = delete;
    ~UnfinishedFiles() {
        for (const Place& place : places_) support::DeleteFileQuietly(place.path + kUnfinishedSuffix);
    }

    std::wstring Begin(const std::wstring& path) {
        places_.push_back({path, false});
        return path + kUnfinishedSuffix;
    }
    void TakePlaces() {
        for (std::size_t i = 0; i < places_.size(); ++i) {
            if (Take(places_[i])) continue;
            for (std::size_t k = i; k-- > 0;) Undo(places_[k]);
            throw support::Error(support::kErrorPathAccess, L"Cannot replace file " + places_[i].path);
        }
        for (const Place& place : places_) {
            if (place.replaces) support::DeleteFileQuietly(place.path + kReplacedSuffix);
        }
    }

  private:
    struct Place {
        std::wstring path;
        bool replaces; // an older file, which waits under a name of its own
    };

    static bool Take(Place& place) {
        place.replaces = support::PathExists(place.path);
        if (place.replaces && !support::RenameFileQuietly(place.path, place.path + kReplacedSuffix)) return false;
        if (support::RenameFileQuietly(place.path + kUnfinishedSuffix, place.path)) return true;
        if (place.replaces) support::RenameFileQuietly(place.path + kReplacedSuffix, place.path);
        return false;
    }
    static void Undo(const Place& place) {
        support::RenameFileQuietly(place.path, place.path + kUnfinishedSuffix);
        if (place.replaces) support::RenameFileQuietly(place.path + kReplacedSuffix, place.path);
    }

    std::vector<Place> places_;
};

} // namespace

void ZipArchive::Open(const std::wstring& file) {
    Open(std::make_unique<ZipFileSource>(file));
}

void ZipArchive::Open(std::unique_ptr<ZipSource> archive) {
    entries_ = ReadZipDirectory(*archive);
    archive_ = std::move(archive);
}

void ZipArchive::Close() {
    archive_.reset();
    entries_.clear();
}

void ZipArchive::Extract(const std::wstring& folder, bool overwrite) {
    UnfinishedFiles unfinished;
    for (const ZipEntry& entry : entries_) {
        const std::wstring place = folder + L"\\" + entry.name;
        if (!overwrite && support::PathExists(place)) {
            throw support::Error(support::kErrorFileExists, L"File already exists " + place);
        }
        support::File file(unfinished.Begin(place), support::File::Mode::kCreate);
        Unpack(entry, [&file](std::string_view bytes) { file.Write(bytes); });
    }
    unfinished.TakePlaces();
}

void ZipArchive::Unpack(const ZipEntry& entry, const ZipTarget& target) {
    CheckedTarget checked(entry, target);
    Inflater inflater;
    const bool stored = entry.method == kZipStored;
    std::string buffer(stored ? 0 : kPieceLength, '\0');
    std::uint32_t done = 0;
    while (done < entry.packedSize) {
        const std::size_t length = std::min<std::size_t>(kPieceLength, entry.packedSize - done);
        std::string piece = ReadZipBytes(*archive_, entry.dataOffset + done, length);
        done += static_cast<std::uint32_t>(length);
        if (stored) {
            checked.Write(piece);
            continue;
        }
        inflater.Feed(piece);
        std::size_t made = 0;
        do {
            made = inflater.Drain(buffer);
            checked.Write(std::string_view(buffer).substr(0, made));
        } while (!inflater.Finished() && made == buffer.size());
        if (inflater.Finished() && (!inflater.Hungry() || done < entry.packedSize)) {
            FailArchive(L"Unexpected data after the entry \"" + entry.name + L"\"");
        }
    }
    if (!stored && !inflater.Finished()) FailArchive(L"The compressed data of \"" + entry.name + L"\" is cut off");
    checked.Finish();
}

} // namespace quorvex::zip
