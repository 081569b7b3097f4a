#pragma once

#include "catalog.h"
#include "jet/cursor.h"
#include "jet/error.h"
#include "tables/table_writer.h"

#include <map>

namespace jet {

struct OpenOptions {
    bool writable = false; ///< false: others may read, nobody may write meanwhile; true: nobody else
    Durability durability = Durability::kProcess;
    unsigned batch = 1; ///< records per transaction
    std::size_t cachePages = 1024;
    std::size_t spillPages = 4096; ///< changed pages after which an open batch is written out, still undecided
    Storage* storage = nullptr;    ///< null: the system's files
};

/// A table of an open database. Cheap to copy; keeps the file open.
class Table {
  public:
    Table(std::shared_ptr<Pager> pager, std::shared_ptr<Allocator> allocator, std::shared_ptr<const TableDef> def)
        : pager_(std::move(pager)), allocator_(std::move(allocator)), def_(std::move(def)) {}

    const TableDef& definition() const { return *def_; }
    /// All rows, in table order.
    Cursor Rows() const { return Cursor(pager_, def_, {}); }
    /// The rows that meet the conditions, as Select orders them.
    Cursor Where(const std::vector<Condition>& conditions) const;
    /// The row of this id; throws kUsage when it is not there (any more).
    Row Fetch(RowId id) const;
    /// The first row in table order that meets the conditions ("[Name]='text'", joined by AND), or nothing.
    std::optional<RowId> FindFirst(std::u16string_view conditions) const;
    /// Rows there are, counted.
    std::uint64_t CountRows() const;

    // Changes; the database must be open for writing. Each is one statement: it happens whole or not at all, and is on
    // its way to the file when the batch is full or Database::Commit is called.
    /// Columns without a value become NULL. Throws kDuplicateKey, kNullKey, kValueTooLong, kTypeMismatch among others.
    RowId Insert(std::span<const Assignment> values);
    /// The other columns keep what they hold.
    void Update(RowId id, std::span<const Assignment> values);
    void Delete(RowId id);

  private:
    std::shared_ptr<Pager> pager_;
    std::shared_ptr<Allocator> allocator_;
    std::shared_ptr<const TableDef> def_;
};

/// An open Jet 4 database. All calls throw Error; one thread at a time.
class Database {
  public:
    /// Opens an existing file. A change that was interrupted is undone first.
    static Database Open(const std::filesystem::path& path, std::u16string_view password,
                         const OpenOptions& options = {});
    /// Makes a new, empty database and opens it for writing. Throws kFileExists where a file stands.
    static Database Create(const std::filesystem::path& path, std::u16string_view password, OpenOptions options = {});

    /// Throws kNoSuchTable. Names are case-blind.
    Table OpenTable(std::u16string_view name);
    std::vector<std::u16string> TableNames();
    /// Runs a query (see ParseQuery).
    Cursor Select(std::u16string_view query);

    /// Adds an empty table. Throws kTableExists, kUsage for an impossible one.
    Table CreateTable(const TableSpec& wanted);
    /// Writes what the open batch holds; on failure nothing of it is left.
    void Commit() { pager_->Commit(); }
    /// Records per transaction from here on.
    void SetBatch(unsigned records) { pager_->SetBatch(records); }

    /// Commits what is open and closes the file. Tables and cursors then fail with kUsage.
    void Close() { pager_->Close(); }
    /// Pages read from the file since it was opened.
    std::uint64_t PagesRead() const { return pager_->pagesRead(); }
    const std::shared_ptr<Pager>& pager() const { return pager_; }

  private:
    explicit Database(std::shared_ptr<Pager> pager);
    const Catalog& GetCatalog();
    void FillNewCatalog();
    Table SystemTable(PageNo page) const;
    void RegisterTable(const std::u16string& name, PageNo page);

    std::shared_ptr<Pager> pager_;
    std::shared_ptr<Allocator> allocator_;
    std::optional<Catalog> catalog_;
    std::map<std::u16string, std::shared_ptr<const TableDef>> tables_; ///< by folded name
    std::uint64_t rollbacks_ = 0;
};

} // namespace jet
