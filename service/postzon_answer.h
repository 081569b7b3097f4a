#pragma once

#include "service/reply.h"
#include "service/row_source.h"

#include <string>

namespace quorvex::service {

// The PostZon record of a postcode (5 to 8 characters), a grid reference (9 or more) or the postcode nearest to
// "longitude|latitude"; with a home postcode that is found, the distance to it in kilometres.
Reply PostZonRecordOf(const RowSource& rows, const std::wstring& key, const std::wstring& homePostcode);

// The row nearest to a point within about 10 km.
std::optional<PostZonRow> NearestRow(const RowSource& rows, double longitude, double latitude);

} // namespace quorvex::service
