#pragma once

#include "jet/path.h"

#include "storage/journal.h"

#include <chrono>

namespace jet {

/// How long, at most, to wait for whoever rolls back an interrupted change.
inline constexpr std::chrono::seconds kRepairWait{10};
/// The pause between two tries to open a file that is in use.
inline constexpr std::chrono::milliseconds kOpenPause{25};

/// Opens a database file. A change that was interrupted is rolled back first; a journal of another file or state is set
/// aside, and the opening fails with kForeignJournal. While others hold the file it tries again for `wait`, and for
/// kRepairWait while there is something to roll back; then it throws kInUse.
std::unique_ptr<File> OpenDatabaseFile(Storage& storage, const Path& path, bool writable,
                                       std::chrono::milliseconds wait);

/// A writer's turn at a file that it shares with readers. It lets go of the file between groups of changes; while it
/// has or wants the file the gate is closed, so that a crowd of readers cannot keep it out for ever.
class WriterTurn {
  public:
    /// Throws kInUse if another writer has a turn at this file.
    WriterTurn(Storage& storage, Path path, Journal& journal);

    /// Opens the file; see OpenDatabaseFile.
    std::unique_ptr<File> Take(std::chrono::milliseconds wait);
    /// To be called once the file is closed. If readers are waiting or were met, they are given time to get in.
    void Give();

  private:
    void Lock(LockByte byte);
    void Settle();

    Storage& storage_;
    Path path_;
    Journal& journal_;
    bool settled_ = false; ///< the journal file is the one that others see
    bool metReaders_ = false;
};

} // namespace jet
