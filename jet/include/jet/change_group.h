#pragma once

#include "jet/database.h"

namespace jet {

/// Changes to many records in few transactions, with the outcome of one transaction for each record: where a record
/// fails, those before it are kept. When a transaction of several records cannot be written (the disk is full), its
/// records are written again one by one until one of them fails by itself.
///
/// The database must be open for writing, and nobody else may change it meanwhile. What was changed is in the file when
/// the group is full and after Commit, which must be called at the end.
class ChangeGroup {
  public:
    ChangeGroup(const Database& database, unsigned mostRecords);

    RowId Insert(const Table& table, std::vector<Assignment> values);
    void Update(const Table& table, RowId id, std::vector<Assignment> values);
    /// On failure the records before the failed one are in the file; those after it are lost.
    void Commit();

  private:
    struct Change {
        Table table;
        std::vector<Assignment> values;
        RowId id; ///< of an insertion: as it came out
        bool inserts = false;
    };

    RowId Write(Change change);
    void Redo();

    std::shared_ptr<Pager> pager_;
    std::size_t most_;
    std::vector<Change> open_; ///< in the open transaction
};

} // namespace jet
