#include "support/process_state.h"

namespace quorvex::support {

ProcessState& Process() {
    static ProcessState state;
    return state;
}

} // namespace quorvex::support
