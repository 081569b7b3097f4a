#pragma once

#include "service/reply.h"
#include "service/row_source.h"

#include <string>

namespace quorvex::service {

// The address lookups, line by line what the component's local mode answers from the same data.

// All addresses at a postcode, or at "postcode, house"; a record count and the records.
Reply AddressList(const RowSource& rows, const std::wstring& postcode);
// The record of "postcode_number_F"; the number counts all premises of the postcode.
Reply AddressRecordOf(const RowSource& rows, const std::wstring& id);
// The street of a postcode.
Reply StreetRecordOf(const RowSource& rows, const std::wstring& postcode);

} // namespace quorvex::service
