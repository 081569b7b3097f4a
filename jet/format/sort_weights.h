#pragma once

#include "base/bytes.h"

namespace jet {

/// What one UTF-16 unit adds to a text key. Upper and lower case have the same weights.
struct SortWeight {
    enum Kind : Byte {
        kIgnored, ///< leaves no trace
        kOne,     ///< one weight byte
        kTwo,     ///< two weight bytes
        kTail,    ///< no weight; `first` is its code in the key's tail (apostrophe, hyphen, controls)
    };
    Kind kind;
    Byte first;
    Byte second;
    Byte extra; ///< accent, 0 none
};

/// The weight of a character, or null for one whose weight this engine does not know.
const SortWeight* FindSortWeight(char16_t c);

} // namespace jet
