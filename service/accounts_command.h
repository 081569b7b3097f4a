#pragma once

#include <string>
#include <vector>

namespace quorvex::service {

// "quorvex-service accounts ...": manages the accounts from the command line. Returns the exit code; throws
// support::Error saying what is wrong.
int RunAccountsCommand(const std::vector<std::string>& arguments);

} // namespace quorvex::service
