#pragma once

#include "support/machine.h"
#include "support/progress_display.h"
#include "support/user_prompts.h"
#include "support/web_access.h"

#include <string>

namespace quorvex::support {

// What surrounds one lookup object. server/ assembles the Windows one, the native programs and tests their own.
struct Platform {
    WebAccess& web;
    UserPrompts& user;
    ProgressDisplay& progress;
    Machine& machine;
    std::wstring logUserName; // if not empty, replaces the user name in log lines
};

} // namespace quorvex::support
