#pragma once

namespace quorvex::testing {

// How often the test ends the process at work: "--kills=N" on the command line.
int KillCount();

} // namespace quorvex::testing
