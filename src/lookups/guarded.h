#pragma once

#include "object/quorvex.h"
#include "support/error.h"
#include "support/log.h"

#include <utility>

namespace quorvex::lookups {

// Runs a lookup. Whatever it throws is logged, its text goes to General_errormessage, and the result is the failure
// value.
template <typename Result, typename Body>
Result Guarded(object::Quorvex& object, Result failure, Body body) {
    try {
        return body();
    } catch (...) {
        const support::Error error = support::CurrentError();
        support::LogError(object.platform, error);
        object.General_errormessage = error.Description();
        return failure;
    }
}

} // namespace quorvex::lookups
