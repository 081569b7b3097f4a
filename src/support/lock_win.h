#pragma once

#include <windows.h>

namespace quorvex::support {

// Holds a slim lock while it lives.
class Locked {
  public:
    explicit Locked(SRWLOCK& lock) : lock_(lock) { AcquireSRWLockExclusive(&lock_); }
    ~Locked() { ReleaseSRWLockExclusive(&lock_); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

  private:
    SRWLOCK& lock_;
};

} // namespace quorvex::support
