#include "jet/change_group.h"

#include <limits>
#include <utility>

namespace jet {

ChangeGroup::ChangeGroup(const Database& database, unsigned mostRecords)
    : pager_(database.pager()), most_(mostRecords) {
    pager_->SetBatch(std::numeric_limits<unsigned>::max()); // the group says when
}

RowId ChangeGroup::Insert(const Table& table, std::vector<Assignment> values) {
    return Write({table, std::move(values), {}, true});
}

void ChangeGroup::Update(const Table& table, RowId id, std::vector<Assignment> values) {
    Write({table, std::move(values), id, false});
}

RowId ChangeGroup::Write(Change change) {
    const auto write = [&change] {
        if (change.inserts) {
            change.id = change.table.Insert(change.values);
        } else {
            change.table.Update(change.id, change.values);
        }
    };
    try {
        write();
    } catch (const std::exception&) {
        // A bad record is taken back alone, but a large group is written out before its end, and may fail as a whole.
        if (open_.empty() || pager_->hasOpenStatements()) throw;
        Redo();
        write();
    }
    const RowId id = change.id;
    open_.push_back(std::move(change));
    if (open_.size() >= most_) Commit();
    return id;
}

void ChangeGroup::Commit() {
    try {
        pager_->Commit();
    } catch (const std::exception&) {
        if (open_.size() < 2) {
            open_.clear();
            throw;
        }
        Redo();
    }
    open_.clear();
}

void ChangeGroup::Redo() {
    std::vector<Change> changes = std::exchange(open_, {});
    for (Change& change : changes) {
        if (!change.inserts) {
            change.table.Update(change.id, change.values);
        } else if (change.table.Insert(change.values) != change.id) {
            // Later changes name the place it had.
            throw Error(ErrorCode::kUsage, "A record written again came to stand elsewhere");
        }
        pager_->Commit();
    }
}

} // namespace jet
