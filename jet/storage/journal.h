#pragma once

#include "base/bytes.h"
#include "base/format.h"
#include "jet/storage.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <span>

namespace jet {

/// The rollback journal beside a database file: the old contents of every page that a transaction overwrites, and the
/// old size. While it is valid ("hot") the transaction is undecided and whoever opens the file next undoes it; making
/// it invalid is the moment of commit.
///
/// The file is a run of segments. A segment counts only when its header and every record carry the right checksum, and
/// pages are overwritten only after their segment is complete, so a half-written segment is ignored rightly.
class Journal {
  public:
    Journal(Storage& storage, std::filesystem::path path) : storage_(storage), path_(std::move(path)) {}

    static std::filesystem::path PathFor(const std::filesystem::path& database);
    /// What ties a journal to its database: a hash of the header page, which no transaction changes.
    static std::uint64_t Identity(File& database);

    /// Adds one segment with the present contents of `pages`, read from `database`, and flushes it.
    void Append(File& database, std::uint64_t identity, PageNo oldPageCount, std::span<const PageNo> pages);
    /// Commits: from here on the overwritten pages stand.
    void Invalidate();
    /// Removes the file; failures are ignored, as an invalid journal harms nobody.
    void Remove() noexcept;
    bool active() const { return segments_ > 0; }

    /// Whether there is a complete journal for this database. Needs no right to write.
    static bool IsHot(Storage& storage, const std::filesystem::path& path, File& database);
    /// Puts the old contents back, flushes, and invalidates. The caller holds the database for writing.
    void Replay(File& database, std::uint64_t identity);

  private:
    void OpenFile();

    Storage& storage_;
    std::filesystem::path path_;
    std::unique_ptr<File> file_;
    std::uint64_t salt_ = 0;
    std::uint64_t end_ = 0;
    std::uint32_t segments_ = 0;
};

} // namespace jet
