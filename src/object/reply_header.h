#pragma once

#include "object/quorvex.h"

#include <string>

namespace quorvex::object {

// Reads the header that every reply carries, and the address-record and PostZon elements, into the object's properties.
// requireRecord: a reply without a postcode does not count as confirmed. A reply without "<confirm>" leaves
// General_confirm as it is and becomes the error message (in local mode: its errormessage element does).
void ReadReplyHeader(object::Quorvex& object, const std::wstring& reply, bool requireRecord);

// Empties the address record and the PostZon data, so that nothing of an earlier reply can pass for an answer.
void ClearRecord(Quorvex& object);

} // namespace quorvex::object
