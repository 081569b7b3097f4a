#pragma once

#include "jet/bytes.h"

#include <bit>
#include <cstddef>

namespace jet {

// Little-endian and big-endian numbers at a place whose bounds the caller has checked.

inline std::uint16_t Load16(const Byte* p) {
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}
inline std::uint32_t Load24(const Byte* p) {
    return std::uint32_t{p[0]} | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16;
}
inline std::uint32_t Load32(const Byte* p) {
    return Load24(p) | std::uint32_t{p[3]} << 24;
}
inline std::uint64_t Load64(const Byte* p) {
    return std::uint64_t{Load32(p)} | std::uint64_t{Load32(p + 4)} << 32;
}
inline void Store16(Byte* p, std::uint32_t v) {
    p[0] = static_cast<Byte>(v);
    p[1] = static_cast<Byte>(v >> 8);
}
inline void Store24(Byte* p, std::uint32_t v) {
    Store16(p, v);
    p[2] = static_cast<Byte>(v >> 16);
}
inline void Store32(Byte* p, std::uint32_t v) {
    Store24(p, v);
    p[3] = static_cast<Byte>(v >> 24);
}
inline void Store64(Byte* p, std::uint64_t v) {
    Store32(p, static_cast<std::uint32_t>(v));
    Store32(p + 4, static_cast<std::uint32_t>(v >> 32));
}
inline std::uint32_t Load24Big(const Byte* p) {
    return std::uint32_t{p[0]} << 16 | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]};
}
inline std::uint32_t Load32Big(const Byte* p) {
    return Load24Big(p) << 8 | std::uint32_t{p[3]};
}
inline void Store24Big(Byte* p, std::uint32_t v) {
    p[0] = static_cast<Byte>(v >> 16);
    p[1] = static_cast<Byte>(v >> 8);
    p[2] = static_cast<Byte>(v);
}
inline void Store32Big(Byte* p, std::uint32_t v) {
    p[0] = static_cast<Byte>(v >> 24);
    Store24Big(p + 1, v);
}

inline void Append16(Bytes& out, std::uint32_t v) {
    out.push_back(static_cast<Byte>(v));
    out.push_back(static_cast<Byte>(v >> 8));
}
inline void Append32(Bytes& out, std::uint32_t v) {
    Append16(out, v);
    Append16(out, v >> 16);
}
inline void AppendBytes(Bytes& out, ByteView v) {
    out.insert(out.end(), v.begin(), v.end());
}

/// Calls `action` with the place of every set bit, ascending.
template <typename Action>
void EachBit(ByteView bitmap, const Action& action) {
    std::size_t i = 0;
    for (; i + 8 <= bitmap.size(); i += 8) {
        for (std::uint64_t word = Load64(bitmap.data() + i); word != 0; word &= word - 1) {
            action(8 * i + static_cast<std::size_t>(std::countr_zero(word)));
        }
    }
    for (; i < bitmap.size(); ++i) {
        for (unsigned byte = bitmap[i]; byte != 0; byte &= byte - 1) {
            action(8 * i + static_cast<std::size_t>(std::countr_zero(byte)));
        }
    }
}

} // namespace jet
