#pragma once

#include <string_view>

namespace quorvex::service {

// Tells the service manager how far this process is ("READY=1", "STOPPING=1"), if it wants to know.
void NotifyManager(std::string_view state);

} // namespace quorvex::service
