#pragma once

#include <windows.h>

namespace quorvex::server {

// What keeps the DLL loaded: living objects, host locks and requests that are still winding down.
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
