#include "jet/change_group.h"

#include "insides.h"
#include "storage/pager.h"

#include <utility>

namespace jet {

ChangeGroup::ChangeGroup(Database& database, GroupLimits limits)
    : pager_(Insides::PagerOf(database)), limits_(limits) {}

ChangeGroup::~ChangeGroup() {
    try {
        Commit();
    } catch (const std::exception&) {
        return; // those who want to know call Commit
    }
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
    if (!pager_->inTransaction()) {
        pager_->Begin();
        begun_ = Clock::now();
    }
    try {
        write();
    } catch (const std::exception&) {
        // A bad record is rolled back alone, but a large group is written out before its end, and may fail as a whole.
        if (open_.empty() || pager_->inTransaction()) throw;
        Redo();
        write(); // a transaction of its own
        return change.id;
    }
    const RowId id = change.id;
    open_.push_back(std::move(change));
    if (IsFull()) Commit(false);
    return id;
}

bool ChangeGroup::IsFull() const {
    return open_.size() >= limits_.records || Clock::now() - begun_ + commitTime_ >= limits_.time;
}

void ChangeGroup::Commit(bool lasting) {
    const Clock::time_point start = Clock::now();
    try {
        pager_->Commit(lasting);
        commitTime_ = Clock::now() - start;
    } catch (const std::exception&) {
        if (open_.size() < 2) {
            open_.clear();
            throw;
        }
        Redo();
    }
    open_.clear();
    pager_->LetGo();
}

void ChangeGroup::Redo() {
    std::vector<Change> changes = std::exchange(open_, {});
    for (Change& change : changes) {
        if (!change.inserts) {
            change.table.Update(change.id, change.values);
        } else if (change.table.Insert(change.values) != change.id) {
            // Later changes name the id that it had.
            throw Error(ErrorCode::kUsage, "A rewritten record got a different row id");
        }
    }
}

} // namespace jet
