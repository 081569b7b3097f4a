#pragma once

#include "service/accounts/database.h"

namespace quorvex::service::accounts {

// Brings the tables to the version that this program knows, making them if there are none; several nodes may do so at
// the same time. Throws support::Error for a database of a newer program.
void Migrate(Database& database);

} // namespace quorvex::service::accounts
