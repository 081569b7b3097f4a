#pragma once

#include "support_code/strict_database.h"

#include <set>
#include <string>
#include <vector>
#include <windows.h>

#include <objbase.h>

namespace quorvex::testing {

class AdoConnectionObject;

// Stands in for the installed data access layer: while it lives, "ADODB.Connection", "ADODB.Recordset" and the
// provider's class are objects of this one in the apartment of the thread that made it. They answer from real data
// files, note every call, and refuse what the real ones refuse, with the same numbers.
class AdoStandIn {
  public:
    AdoStandIn();
    AdoStandIn(const AdoStandIn&) = delete;
    AdoStandIn& operator=(const AdoStandIn&) = delete;
    ~AdoStandIn();

    StrictDatabases databases;
    // "Connection.Mode = 8", "Recordset.Open SELECT ...", in order. Reading and writing of values is noted, too.
    std::vector<std::wstring> calls;
    int liveObjects = 0;

    // The provider's ProgID for as long as the stand-in lives, so that the layer counts as usable.
    void RegisterProvider();

    std::set<AdoConnectionObject*> connections; // all that live

  private:
    void Register(const wchar_t* progId, IClassFactory* factory);

    bool initialised_ = false;
    bool providerRegistered_ = false;
    std::vector<DWORD> cookies_;
};

} // namespace quorvex::testing
