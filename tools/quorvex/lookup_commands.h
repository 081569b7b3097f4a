#pragma once

#include "object/quorvex.h"
#include "quorvex/report.h"

#include <string>

namespace quorvex::cli {

// The lookups, from the service or the data folder that is set in the object. Finding nothing is Outcome::Nothing; a
// key that cannot be one is a wrong call; what the service or the files refuse is a failure with their own words.

// Columns: id, line. The house keeps the lines that hold it, as in the component; ids are those of the whole list.
Report Find(object::Quorvex& object, const std::wstring& postcode, const std::wstring& house);
// One tall row.
Report Record(object::Quorvex& object, const std::wstring& id);
Report Street(object::Quorvex& object, const std::wstring& postcode);
// A postcode, a grid reference or "longitude|latitude".
Report PostZon(object::Quorvex& object, const std::wstring& key);
// From one postcode to another; columns: from, to, kilometres, miles.
Report Distance(object::Quorvex& object, const std::wstring& from, const std::wstring& to);

struct Place {
    double latitude = 0;
    double longitude = 0;
};
// The place of a postcode. If it is not found the report says why and the result is false.
bool FindPlace(object::Quorvex& object, const std::wstring& postcode, Place& place, Report& report);

} // namespace quorvex::cli
