#pragma once

#include <string>
#include <string_view>

namespace jet {

/// UTF-16 to UTF-8. A lone surrogate becomes U+FFFD.
std::string ToUtf8(std::u16string_view text);

/// UTF-8 to UTF-16. Each byte that is not part of a well-formed character becomes U+FFFD.
std::u16string FromUtf8(std::string_view text);

} // namespace jet
