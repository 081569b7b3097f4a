#pragma once

#if defined(_WIN32)
#include "support/machine_win.h"
#else
#include "support/machine_posix.h"
#endif

namespace quorvex::support {

// The machine for programs that are built for both systems.
#if defined(_WIN32)
using SystemMachine = WindowsMachine;
#else
using SystemMachine = PosixMachine;
#endif

} // namespace quorvex::support
