#pragma once

#include "base/bytes.h"
#include "jet/storage.h"

#include <cstddef>
#include <string_view>

namespace jet {

class Pager;

/// XORs `size` bytes with the RC4 keystream of the header area (its own inverse).
void ApplyHeaderMask(Byte* area, std::size_t size);

/// Refuses what is not a whole, plain Jet 4 file: kNotADatabase, kUnsupportedVersion, kEncrypted, kTruncated; then a
/// password that differs (case counts) with kWrongPassword. A file without password accepts any.
void CheckHeader(Pager& pager, std::u16string_view password);

/// Fills page 0 of a new file. `date` is the creation date in days; at most 20 password characters.
void BuildHeader(Byte* page, double date, std::u16string_view password);

} // namespace jet
