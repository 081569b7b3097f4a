#pragma once

#include "server/dispatcher_win.h"

namespace quorvex::server {

// The component's own dispatcher, shared by all objects and gone with the last of them.
class SharedDispatcher {
  public:
    SharedDispatcher();
    ~SharedDispatcher();
    SharedDispatcher(const SharedDispatcher&) = delete;
    SharedDispatcher& operator=(const SharedDispatcher&) = delete;

    // Loads the type library from the DLL itself, registered or not; null when that fails.
    Dispatcher* Get();
};

} // namespace quorvex::server
