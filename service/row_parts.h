#pragma once

#include "localdata/packed_address.h"

#include <string>
#include <vector>

namespace quorvex::service {

// A row's text cut into what a search looks at.
struct RowParts {
    struct Premise {
        std::wstring organisation;
        std::wstring house; // sub-building, building, number
        std::wstring text;  // all of it
    };
    std::vector<Premise> premises; // in stored order
    std::wstring street;           // street and locality, ", " between them
    std::wstring town;
    std::wstring county;
    std::wstring postcode;
};

RowParts PartsOf(const std::wstring& plain);

} // namespace quorvex::service
