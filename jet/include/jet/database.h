#pragma once

#include "jet/error.h"
#include "jet/path.h"
#include "jet/storage.h"
#include "jet/table.h"

#include <chrono>

namespace jet {

struct OpenOptions {
    bool writable = false; ///< false: others may read, nobody may write meanwhile; true: exclusive
    /// Writable: between its groups of changes a ChangeGroup lets go of the file, so that readers get their turn.
    bool yields = false;
    /// How long to try while others hold the file.
    std::chrono::milliseconds wait{2000};
    std::size_t cachePages = 1024; ///< unchanged pages kept in memory
    std::size_t spillPages = 4096; ///< changed pages after which an open group is written out, still uncommitted
    Storage* storage = nullptr;    ///< null: the system's files
};

/// An open Jet 4 database. All calls throw Error; one thread at a time.
class Database {
  public:
    /// Opens an existing file. An interrupted change is rolled back first. Throws kInUse when others held the file all
    /// the time, kForeignJournal when the journal beside it was made from another file or state: the journal is then
    /// renamed and the file untouched, and the next opening succeeds.
    static Database Open(const Path& path, std::u16string_view password, const OpenOptions& options = {});
    /// Makes a new, empty database and opens it for writing, whatever options.writable says. Throws kFileExists if the
    /// file exists.
    static Database Create(const Path& path, std::u16string_view password, const OpenOptions& options = {});
    /// Rolls back an interrupted change, as Open does, for those who then open the file by other means. Does nothing if
    /// there is no journal.
    static void Recover(const Path& path, const OpenOptions& options = {});
    /// Whether somebody holds the file in a way that keeps readers out. False if the file cannot be opened for another
    /// reason.
    static bool IsHeld(const Path& path, const OpenOptions& options = {});
    Database(Database&& other) noexcept;
    Database& operator=(Database&& other) noexcept;
    /// Closes the file.
    ~Database();

    /// Throws kNoSuchTable. Names are case-blind.
    Table OpenTable(std::u16string_view name);
    std::vector<std::u16string> TableNames();
    /// Runs a query (see ParseQuery).
    Cursor Select(std::u16string_view query);
    Cursor Select(const Query& query);

    /// Adds an empty table. Throws kTableExists, and kUsage for an impossible one.
    Table CreateTable(const TableSpec& wanted);

    // Without these each change is a transaction of its own. See ChangeGroup for long runs of changes.
    /// The changes that follow are one transaction, until Commit or RollBack. A failed write rolls all of it back.
    void Begin();
    /// Writes the open transaction; its changes are on the disk when this returns. On failure nothing of it is left.
    void Commit();
    void RollBack();

    /// Commits what is open and closes the file. Tables and cursors then fail with kUsage.
    void Close();
    /// Pages read from the file since it was opened.
    std::uint64_t PagesRead() const;

  private:
    friend struct Insides;
    struct State;
    explicit Database(std::unique_ptr<State> state);

    std::unique_ptr<State> state_;
};

} // namespace jet
