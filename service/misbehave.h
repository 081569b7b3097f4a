#pragma once

#include "service/http/message.h"
#include "service/test_control.h"

namespace quorvex::service {

// The answer as an order of the control page wants it. Waits where the order says so.
http::Response Misbehaved(TestControl& control, TestControl::Order order, http::Response response);

} // namespace quorvex::service
