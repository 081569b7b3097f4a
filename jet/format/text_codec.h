#pragma once

#include "base/bytes.h"
#include "jet/text.h"

namespace jet {

/// Stored text to UTF-16: plain little-endian units, or compressed (starts with FF FE) with narrow and wide stretches.
std::u16string DecodeText(ByteView stored);

/// Text to its stored form. With `compress`, text of 3 to 1024 characters in U+0001 to U+00FF takes one byte a
/// character. A leading byte order mark is dropped because it would be read as the mark of compression.
Bytes EncodeText(std::u16string_view text, bool compress);

} // namespace jet
