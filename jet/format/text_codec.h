#pragma once

#include "base/bytes.h"

#include <string>
#include <string_view>

namespace jet {

/// Stored text to UTF-16: plain little-endian units, or compressed (begins FF FE) with narrow and wide stretches.
std::u16string DecodeText(ByteView stored);

/// Text to its stored form. With `compress`, text of 3 to 1024 characters that are all U+0001 to U+00FF takes one byte
/// a character. A byte order mark at the start is dropped, as it would read as the mark of compression.
Bytes EncodeText(std::u16string_view text, bool compress);

/// For messages: UTF-16 to UTF-8; a lone surrogate becomes U+FFFD.
std::string ToUtf8(std::u16string_view text);

} // namespace jet
