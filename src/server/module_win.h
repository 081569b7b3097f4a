#pragma once

#include <windows.h>

namespace quorvex::server {

// From the first object on the DLL stays until the process ends: threads of the network stack return through its code
// after their last callback, the last release of an object runs on when COM may already unload, and each load would
// take a TLS index that the run-time library does not give back.
void KeepModuleLoaded();

// What else keeps the DLL loaded: factories, host locks and requests that are still winding down.
class ModuleReference {
  public:
    ModuleReference();
    ~ModuleReference();
    ModuleReference(const ModuleReference&) = delete;
    ModuleReference& operator=(const ModuleReference&) = delete;
};

void LockModule(bool lock);
bool ModuleInUse();

HINSTANCE ModuleInstance();

} // namespace quorvex::server
