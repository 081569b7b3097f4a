#include "service/accounts/database.h"

#include "support/text.h"

#include <pqxx/pqxx>

#include <map>

namespace quorvex::service::accounts {
namespace {

constexpr char kAloneLock[] = "SELECT pg_advisory_xact_lock(7164263521)"; // any number that nobody else uses

class Postgres final : public Database {
  public:
    explicit Postgres(const std::string& url) {
        Guarded([&] {
            connection_ = std::make_unique<pqxx::connection>(url);
            connection_->set_variable("client_min_messages", "warning");
        });
    }

    std::vector<Row> Run(const std::string& text, const std::vector<Cell>& values) override {
        std::vector<Row> rows;
        Guarded([&] {
            pqxx::nontransaction work(*connection_);
            std::vector<const char*> parameters;
            parameters.reserve(values.size());
            for (const Cell& value : values) parameters.push_back(value ? value->c_str() : nullptr);
            const pqxx::result result =
                work.exec_prepared(Prepared(text), pqxx::prepare::make_dynamic_params(parameters));
            for (const auto& line : result) {
                Row& row = rows.emplace_back();
                for (const auto& field : line)
                    row.push_back(field.is_null() ? Cell() : Cell(std::string(field.c_str(), field.size())));
            }
        });
        return rows;
    }

    void BeginAlone() override {
        Begin();
        Run(kAloneLock, {});
    }
    void Begin() override { Run("BEGIN", {}); }

    void Rollback() noexcept override {
        try {
            Run("ROLLBACK", {});
        } catch (const support::Error&) { // undone when the connection is closed
        }
    }

  private:
    const std::string& Prepared(const std::string& text) {
        const auto known = names_.find(text);
        if (known != names_.end()) return known->second;
        std::string name = "s" + std::to_string(names_.size());
        connection_->prepare(name, text);
        return names_.emplace(text, std::move(name)).first->second;
    }

    template <typename Work>
    void Guarded(Work work) {
        try {
            work();
        } catch (const pqxx::broken_connection& error) {
            throw DatabaseLost(Why(error));
        } catch (const pqxx::sql_error& error) {
            // Classes of SQLSTATE: 40 a conflict, 57P and 53 a server that stops or lacks something.
            const std::string state = error.sqlstate();
            if (state.starts_with("40")) throw DatabaseBusy(Why(error));
            if (state.starts_with("57P") || state.starts_with("53") || state.starts_with("08"))
                throw DatabaseLost(Why(error));
            throw support::Error(support::kErrorDatabase, support::FromUtf8(Why(error)));
        } catch (const std::exception& error) {
            // What the library reports of a connection that ended while a statement was under way.
            if (!connection_ || !connection_->is_open()) throw DatabaseLost(Why(error));
            throw support::Error(support::kErrorDatabase, support::FromUtf8(Why(error)));
        }
    }

    static std::string Why(const std::exception& error) {
        std::string text = error.what();
        while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
        return "accounts in PostgreSQL: " + text;
    }

    std::unique_ptr<pqxx::connection> connection_;
    std::map<std::string, std::string> names_; // of prepared statements, by their text
};

} // namespace

std::unique_ptr<Database> OpenPostgres(const std::string& url) {
    return std::make_unique<Postgres>(url);
}

} // namespace quorvex::service::accounts
