#pragma once

#include "object/quorvex.h"

#include <string>

namespace quorvex::lookups {

// True when a local data file may be used; always true in web mode. Otherwise the reason is the object's last error
// text and, with showMessages, shown to the user. Throws support::Error when no database access can be had at all.
bool DataFileUsable(object::Quorvex& object, const std::wstring& fileName, bool showMessages);

} // namespace quorvex::lookups
