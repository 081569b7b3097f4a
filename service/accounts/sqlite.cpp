#include "service/accounts/database.h"

#include "support/text.h"

#include <sqlite3.h>

#include <map>

namespace quorvex::service::accounts {
namespace {

constexpr int kBusyMs = 5000; // how long another process may hold the file

class Sqlite final : public Database {
  public:
    explicit Sqlite(const std::string& path) : path_(path) {
        const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
        const int code = sqlite3_open_v2(path.c_str(), &handle_, flags, nullptr);
        if (code != SQLITE_OK) {
            const std::string why = sqlite3_errstr(code);
            sqlite3_close(handle_);
            throw support::Error(support::kErrorDatabase, support::FromUtf8("accounts in " + path + ": " + why));
        }
        sqlite3_busy_timeout(handle_, kBusyMs);
        try {
            // FULL: a credit that was taken stays taken when the power fails.
            for (const char* setting :
                 {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=FULL", "PRAGMA foreign_keys=ON"}) {
                Run(setting, {});
            }
        } catch (const support::Error&) {
            CloseAll();
            throw;
        }
    }
    ~Sqlite() override { CloseAll(); }

    std::vector<Row> Run(const std::string& text, const std::vector<Cell>& values) override {
        sqlite3_stmt* const statement = Prepared(text);
        const Reset reset{statement};
        for (std::size_t i = 0; i < values.size(); ++i) {
            const int position = sqlite3_bind_parameter_index(statement, ("$" + std::to_string(i + 1)).c_str());
            if (position == 0 || !values[i]) continue; // NULL unless bound
            Check(sqlite3_bind_text(statement, position, values[i]->data(), static_cast<int>(values[i]->size()),
                                    nullptr));
        }
        std::vector<Row> rows;
        int code = sqlite3_step(statement);
        for (; code == SQLITE_ROW; code = sqlite3_step(statement)) rows.push_back(RowOf(statement));
        if (code != SQLITE_DONE) Check(code);
        return rows;
    }

    void BeginAlone() override { Begin(); }
    void Begin() override { Run("BEGIN IMMEDIATE", {}); }

    void Rollback() noexcept override {
        try {
            if (sqlite3_get_autocommit(handle_) == 0) Run("ROLLBACK", {});
        } catch (const support::Error&) { // undone when the file is closed
        }
    }

  private:
    struct Reset {
        sqlite3_stmt* statement;
        ~Reset() {
            sqlite3_reset(statement);
            sqlite3_clear_bindings(statement);
        }
    };

    static Row RowOf(sqlite3_stmt* statement) {
        Row row(static_cast<std::size_t>(sqlite3_column_count(statement)));
        for (std::size_t i = 0; i < row.size(); ++i) {
            const auto column = static_cast<int>(i);
            const void* const text = sqlite3_column_blob(statement, column);
            if (sqlite3_column_type(statement, column) == SQLITE_NULL) continue;
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
            row[i].emplace(static_cast<const char*>(text), size);
        }
        return row;
    }

    sqlite3_stmt* Prepared(const std::string& text) {
        const auto known = statements_.find(text);
        if (known != statements_.end()) return known->second;
        sqlite3_stmt* statement = nullptr;
        Check(sqlite3_prepare_v2(handle_, text.c_str(), static_cast<int>(text.size()), &statement, nullptr));
        statements_.emplace(text, statement);
        return statement;
    }

    void Check(int code) {
        if (code == SQLITE_OK) return;
        const std::string why = "accounts in " + path_ + ": " + sqlite3_errmsg(handle_);
        switch (code & 0xFF) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            throw DatabaseBusy(why);
        // The disk is full or gone; it may come back.
        case SQLITE_FULL:
        case SQLITE_IOERR:
        case SQLITE_CANTOPEN:
            throw DatabaseLost(why);
        default:
            throw support::Error(support::kErrorDatabase, support::FromUtf8(why));
        }
    }

    void CloseAll() {
        for (const auto& [text, statement] : statements_) sqlite3_finalize(statement);
        sqlite3_close(handle_);
    }

    std::string path_;
    sqlite3* handle_ = nullptr;
    std::map<std::string, sqlite3_stmt*> statements_;
};

} // namespace

std::unique_ptr<Database> OpenSqlite(const std::string& path) {
    return std::make_unique<Sqlite>(path);
}

} // namespace quorvex::service::accounts
