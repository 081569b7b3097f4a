#pragma once

#include "database/database.h"

namespace quorvex::database::ado {

// True when this process can use the installed data access layer on Jet files: "ADODB.Connection" and the provider
// "Microsoft.Jet.OLEDB.4.0" are both registered for its bitness and can be created, and the connection answers to its
// members. A registration alone proves nothing: some systems register a connection object that can do nothing.
// The calling thread's apartment must be initialised. Looks afresh at each call.
bool AdoAvailable();

// The engine over "ADODB.Connection" and "ADODB.Recordset". Objects belong to the apartment that creates them.
class AdoProvider final : public DatabaseProvider {
  public:
    std::unique_ptr<Connection> CreateConnection() override;
    std::unique_ptr<Recordset> CreateRecordset() override;
    std::wstring Name() const override;
};

} // namespace quorvex::database::ado
