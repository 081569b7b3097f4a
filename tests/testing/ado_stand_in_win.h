#pragma once

#include "testing/scripted_object_win.h"
#include "testing/strict_databases.h"

#include <memory>
#include <vector>

namespace quorvex::testing {

// Stands in for the installed data access layer: while it lives, "ADODB.Connection" and "ADODB.Recordset" are objects
// of this one in the apartment of the thread that made it. They answer from real data files, note every call, and
// refuse what the real ones refuse, with the same numbers.
class AdoStandIn {
  public:
    AdoStandIn();
    AdoStandIn(const AdoStandIn&) = delete;
    AdoStandIn& operator=(const AdoStandIn&) = delete;
    ~AdoStandIn();

    // Registers the provider's ProgID for as long as the stand-in lives, so that the layer counts as usable.
    void RegisterProvider();

    StrictDatabases databases;
    std::vector<std::wstring> calls; //< Connection.Mode = 8, Recordset.Open("SELECT ..."), in order; values as well

  private:
    ScriptedObject* NewConnection();
    ScriptedObject* NewRecordset();

    bool initialised_ = false;
    std::vector<std::unique_ptr<ProgramStandIn>> programs_;
    std::map<IDispatch*, std::weak_ptr<database::Connection>> connections_;
};

} // namespace quorvex::testing
