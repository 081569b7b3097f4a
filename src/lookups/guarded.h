#pragma once

#include "object/quorvex.h"
#include "object/reply_header.h"
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

// Runs a lookup that answers with a record or a list: nothing of the lookup before it stays, and General_confirm is the
// result.
template <typename Body>
bool RunLookup(object::Quorvex& object, Body body) {
    object.EnsureServerURL();
    object.General_errormessage.clear();
    object.General_confirm = false;
    object::ClearRecord(object);
    const bool found = Guarded(object, false, body);
    object.General_confirm = found;
    return found;
}

} // namespace quorvex::lookups
