#pragma once

#include "localdata/data_file_names.h"
#include "object/quorvex.h"

#include <string>

namespace quorvex::lookups {

// True when a local data file may be used; always true in web mode. Otherwise the reason is the object's last error
// text and, with showMessages, shown to the user. Throws support::Error when no database access can be had at all.
bool DataFileUsable(object::Quorvex& object, const std::wstring& fileName, bool showMessages);

// Runs a lookup in a local data file; failure if the file is missing, which is told in place of what the body threw. It
// is asked only then: looking for the file beforehand would take a tenth of a lookup.
template <typename Result, typename Body>
Result WithDataFile(object::Quorvex& object, wchar_t kind, Result failure, Body body) {
    try {
        return body();
    } catch (...) {
        if (DataFileUsable(object, localdata::FindDataFile(kind)->fileName, true)) throw;
        return failure;
    }
}

// For answers that need no data: throws support::Error if the file of a kind is missing all the same.
void RequireDataFile(const object::Quorvex& object, wchar_t kind);

} // namespace quorvex::lookups
