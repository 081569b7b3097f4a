#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace jet {

using Byte = std::uint8_t;
using Bytes = std::vector<Byte>;
using ByteView = std::span<const Byte>;
using ByteSpan = std::span<Byte>;

} // namespace jet
