#pragma once

#include "base/bytes.h"
#include "jet/value.h"

namespace jet {

/// The stored form of a row id: the slot in the low byte, the page above it.
inline RowId RowIdFromPointer(std::uint32_t pointer) {
    return {pointer >> 8, static_cast<std::uint8_t>(pointer & 0xFF)};
}
inline std::uint32_t PointerFromRowId(RowId id) {
    return id.page << 8 | id.slot;
}

} // namespace jet
