#pragma once

#include <windows.h>

namespace quorvex::server {

enum class Scope { Machine, User };

// Writes the class, its ProgID and the type library into the registry, or takes everything out again. Registering what
// is registered and unregistering what is not are no errors; a failed registration leaves nothing behind. The ProgID,
// which both bitnesses share, goes with the last of them.
HRESULT Register(Scope scope);
HRESULT Unregister(Scope scope);

} // namespace quorvex::server
