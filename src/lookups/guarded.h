#pragma once

#include "object/quorvex.h"
#include "support/error.h"
#include "support/log.h"

#include <utility>

namespace quorvex::lookups {

// Runs a lookup. What fails inside is logged, stands in General_errormessage and gives the failure value.
template <typename Result, typename Body>
Result Guarded(object::Quorvex& object, Result failure, Body body) {
    try {
        return body();
    } catch (const support::Error& error) {
        support::LogError(object.platform, error);
        object.General_errormessage = error.Description();
        return failure;
    }
}

} // namespace quorvex::lookups
