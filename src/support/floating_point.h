#pragma once

#if defined(_WIN32) && defined(__i386__)
#include <cfloat>
#endif

namespace quorvex::support {

// Double precision for the arithmetic of a scope, whatever the host set: graphics libraries leave 32-bit processes in
// single precision, which the C library's functions obey. Nothing to do elsewhere.
class DoublePrecision {
  public:
#if defined(_WIN32) && defined(__i386__)
    DoublePrecision() : before_(_controlfp(0, 0)) {
        _controlfp(_PC_53, _MCW_PC);
    }
    ~DoublePrecision() {
        _controlfp(before_, _MCW_PC);
    }
#else
    DoublePrecision() {} // not trivial, so that no compiler calls its objects unused
#endif
    DoublePrecision(const DoublePrecision&) = delete;
    DoublePrecision& operator=(const DoublePrecision&) = delete;

#if defined(_WIN32) && defined(__i386__)
  private:
    unsigned before_;
#endif
};

} // namespace quorvex::support
