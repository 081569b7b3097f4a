#pragma once

#include "base/bytes.h"
#include "base/format.h"
#include "jet/path.h"
#include "jet/storage.h"

#include <memory>
#include <span>

namespace jet {

/// What tells one file, and one state of it, from all others.
struct FileState {
    std::uint64_t identity = 0; ///< a hash of the header page less the stamp; creation time and password are part of it
    std::uint64_t stamp = 0;    ///< a random number that every transaction replaces; 0 until the first one

    /// Throws kIo if the file has no whole header page.
    static FileState Of(File& database);
    friend bool operator==(const FileState&, const FileState&) = default;
};

/// The rollback journal beside a database file: the old contents of every page that a transaction overwrites, and the
/// old size. While it is valid ("hot") the transaction is not committed, and whoever opens the file next rolls it back;
/// invalidating the journal is the moment of commit.
///
/// The file is a run of segments. A segment counts only if its header and every record have the right checksum, and
/// pages are overwritten only when their segment is on the medium, so a partly written segment is safely ignored.
///
/// A transaction replaces the stamp in the header page. The journal names the stamps before and after it, so it is put
/// back only into the file and the state that it was made from, or into what became of them half-way.
class Journal {
  public:
    Journal(Storage& storage, Path path) : storage_(storage), path_(std::move(path)) {}

    static Path PathFor(const Path& database);

    /// The stamp that the coming transaction puts into the header page.
    std::uint64_t NextStamp();
    /// Adds one segment with the present contents of `pages`, read from `database`, and flushes it. `newPageCount` is
    /// the largest page count that the file may reach before the next segment.
    void Append(File& database, const FileState& before, PageNo oldPageCount, PageNo newPageCount,
                std::span<const PageNo> pages);
    /// Commits: from here on the overwritten pages are the file's contents. After a failure nobody knows. If it does
    /// not last, a power cut before the next segment is flushed may roll the transaction back, as a whole.
    void Invalidate(bool lasting);
    /// Removes the file; failures are ignored because an invalid journal does no harm.
    void Remove() noexcept;
    void RemoveIfEmpty() noexcept;
    bool active() const { return segments_ > 0; }
    /// The open journal file; opens or creates it.
    File& OpenFile();
    /// The same, but what is open now is closed first: its name may have been removed.
    File& OpenFileAgain();

    enum class Finding {
        kNothing, ///< no journal, or none that is valid
        kHot,     ///< must be put back before the file is used
        kForeign, ///< valid, but made from another file or another state of this one
    };
    /// Looks at the journal beside `database`. Needs no right to write.
    static Finding Examine(Storage& storage, const Path& path, File& database);
    /// Whether the journal begins like a valid one, judged without the database.
    static bool LooksValid(File& journal);
    /// Puts the old contents back, flushes, and invalidates. The caller holds the database for writing and knows the
    /// journal to be hot.
    void Replay(File& database);
    /// Renames the journal and returns its new path.
    static Path SetAside(Storage& storage, const Path& path);

  private:
    void WriteRecords(File& database, ByteView header, std::span<const PageNo> pages);

    Storage& storage_;
    Path path_;
    std::unique_ptr<File> file_;
    bool nameFlushed_ = false;
    std::uint64_t salt_ = 0;
    std::uint64_t end_ = 0;
    std::uint32_t segments_ = 0;
};

} // namespace jet
