#pragma once

#include "database/ado/provider_win.h"
#include "database/jet/jet_provider.h"

namespace quorvex::server {

// The engine for the data files: the installed data access layer where it has Jet for this bitness, the embedded engine
// everywhere else. Chosen at the first use and kept, so that connections and record sets always come from one engine.
class DataEngine final : public database::DatabaseProvider {
  public:
    std::unique_ptr<database::Connection> CreateConnection() override { return Chosen().CreateConnection(); }
    std::unique_ptr<database::Recordset> CreateRecordset() override { return Chosen().CreateRecordset(); }
    std::wstring Name() const override { return Chosen().Name(); }

  private:
    database::DatabaseProvider& Chosen() const {
        if (chosen_ == nullptr) {
            chosen_ = database::ado::AdoAvailable() ? static_cast<database::DatabaseProvider*>(&ado_) : &jet_;
        }
        return *chosen_;
    }

    mutable database::ado::AdoProvider ado_;
    mutable database::JetProvider jet_;
    mutable database::DatabaseProvider* chosen_ = nullptr;
};

} // namespace quorvex::server
