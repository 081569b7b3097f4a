#include "testing/after_win.h"

#include <map>
#include <utility>

namespace quorvex::testing {
namespace {

std::map<UINT_PTR, After*>& Timers() {
    thread_local std::map<UINT_PTR, After*> timers;
    return timers;
}

} // namespace

After::After(unsigned milliseconds, std::function<void()> action)
    : action_(std::move(action)), id_(SetTimer(nullptr, 0, milliseconds, OnTimer)) {
    Timers()[id_] = this;
}

After::~After() {
    KillTimer(nullptr, id_);
    Timers().erase(id_);
}

void CALLBACK After::OnTimer(HWND, UINT, UINT_PTR id, DWORD) {
    KillTimer(nullptr, id);
    const auto found = Timers().find(id);
    if (found == Timers().end() || found->second->fired_) return;
    found->second->fired_ = true;
    found->second->action_();
}

} // namespace quorvex::testing
