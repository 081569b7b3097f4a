#pragma once

#include "jet/database.h"

#include <chrono>
#include <limits>

namespace jet {

/// How much one transaction of a ChangeGroup may hold, whichever comes first.
struct GroupLimits {
    /// For about this long a group holds the file, flushes included: few flushes, and short waits for readers.
    std::chrono::milliseconds time{50};
    std::size_t records = std::numeric_limits<std::size_t>::max();
};

/// Changes to many records in few transactions, as if each record had been written by itself: if a record fails, those
/// before it are kept. If a transaction of several records cannot be written (the disk is full), its records are
/// written again one by one until one of them fails by itself.
///
/// The database must be open for writing, and nobody else may change it meanwhile. Changes are on the disk once the
/// group is full and after Commit; only Commit promises that a power cut cannot take the last group back as a whole.
class ChangeGroup {
  public:
    explicit ChangeGroup(Database& database, GroupLimits limits = {});
    /// Commits, but cannot report a failure.
    ~ChangeGroup();
    ChangeGroup(const ChangeGroup&) = delete;
    ChangeGroup& operator=(const ChangeGroup&) = delete;

    RowId Insert(const Table& table, std::vector<Assignment> values);
    void Update(const Table& table, RowId id, std::vector<Assignment> values);
    /// On failure the records before the failed one are in the file; those after it are lost. If it need not last, a
    /// power cut may take the group back as a whole until something is committed that lasts; that saves a flush.
    void Commit(bool lasting = true);

  private:
    using Clock = std::chrono::steady_clock;
    struct Change {
        Table table;
        std::vector<Assignment> values;
        RowId id; ///< of an insertion: as it came out
        bool inserts = false;
    };

    RowId Write(Change change);
    bool IsFull() const;
    void Redo();

    std::shared_ptr<Pager> pager_;
    GroupLimits limits_;
    std::vector<Change> open_; ///< in the open transaction
    Clock::time_point begun_;
    Clock::duration commitTime_{}; ///< what the last commit took
};

} // namespace jet
