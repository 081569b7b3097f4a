#pragma once

#if defined(_WIN32)
#include <xmmintrin.h>
#endif

namespace quorvex::support {

// Default arithmetic for the life of an entry into the component: double precision, rounding to nearest, no exceptions.
// Some hosts have exceptions switched on or single precision set. Afterwards their control words and status flags are
// as they were. Natively there is nothing to do.
class DefaultArithmetic {
  public:
#if defined(_WIN32)
    DefaultArithmetic() : sse_(_mm_getcsr()) {
        constexpr unsigned kDefaultSse = 0x1F80;
        constexpr unsigned short kDefaultX87 = 0x027F;
        __asm__ __volatile__("fnstenv %0" : "=m"(x87_));
        __asm__ __volatile__("fnclex\n\tfldcw %0" : : "m"(kDefaultX87));
        _mm_setcsr(kDefaultSse);
    }
    ~DefaultArithmetic() {
        // The stack's state belongs to the code around; everything else goes back in one step, since our own flags and
        // the host's control word together would raise an exception.
        Environment now;
        __asm__ __volatile__("fnstenv %0" : "=m"(now));
        now.status = (now.status & kStackTop) | (x87_.status & ~kStackTop);
        now.control = x87_.control;
        __asm__ __volatile__("fldenv %0" : : "m"(now));
        _mm_setcsr(sse_);
    }
#else
    DefaultArithmetic() {} // not trivial, so that no compiler calls its objects unused
#endif
    DefaultArithmetic(const DefaultArithmetic&) = delete;
    DefaultArithmetic& operator=(const DefaultArithmetic&) = delete;

#if defined(_WIN32)
  private:
    static constexpr unsigned kStackTop = 0x3800;
    struct Environment { // as fnstenv writes it
        unsigned control;
        unsigned status;
        unsigned others[5];
    };
    Environment x87_{};
    unsigned sse_;
#endif
};

} // namespace quorvex::support
