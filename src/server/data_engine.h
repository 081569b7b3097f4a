#pragma once

#include "localdata/ado/provider_win.h"
#include "localdata/jet_provider.h"

namespace quorvex::server {

// The engine for the data files: the installed data access layer where it has Jet for this bitness, the embedded engine
// everywhere else. Chosen at the first use and kept, so that connections and record sets always come from one engine.
class DataEngine final : public localdata::DatabaseProvider {
  public:
    std::unique_ptr<localdata::Connection> CreateConnection() override { return Chosen().CreateConnection(); }
    std::unique_ptr<localdata::Recordset> CreateRecordset() override { return Chosen().CreateRecordset(); }
    std::wstring Name() const override { return Chosen().Name(); }

  private:
    localdata::DatabaseProvider& Chosen() const {
        if (chosen_ == nullptr) {
            chosen_ = localdata::ado::AdoAvailable() ? static_cast<localdata::DatabaseProvider*>(&ado_) : &jet_;
        }
        return *chosen_;
    }

    mutable localdata::ado::AdoProvider ado_;
    mutable localdata::JetProvider jet_;
    mutable localdata::DatabaseProvider* chosen_ = nullptr;
};

} // namespace quorvex::server
