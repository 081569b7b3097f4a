#include "service/accounts/database.h"

#include "support/text.h"

namespace quorvex::service::accounts {

DatabaseLost::DatabaseLost(const std::string& why) : support::Error(support::kErrorDatabase, support::FromUtf8(why)) {}

DatabaseBusy::DatabaseBusy(const std::string& why) : support::Error(support::kErrorDatabase, support::FromUtf8(why)) {}

Transaction::Transaction(Database& database, Kind kind) : database_(database) {
    if (kind == Kind::Alone) {
        database_.BeginAlone();
    } else {
        database_.Begin();
    }
}

Transaction::~Transaction() {
    if (open_) database_.Rollback();
}

void Transaction::Commit() {
    database_.Commit();
    open_ = false;
}

bool IsPostgresName(const std::string& name) {
    return name.starts_with("postgresql://") || name.starts_with("postgres://");
}

std::unique_ptr<Database> OpenDatabase(const std::string& name) {
    return IsPostgresName(name) ? OpenPostgres(name) : OpenSqlite(name);
}

std::string ShownName(const std::string& name) {
    const std::size_t user = name.find("://");
    const std::size_t at = name.find('@');
    if (user == std::string::npos || at == std::string::npos) return name;
    const std::size_t colon = name.find(':', user + 3);
    return colon < at ? name.substr(0, colon) + name.substr(at) : name;
}

} // namespace quorvex::service::accounts
