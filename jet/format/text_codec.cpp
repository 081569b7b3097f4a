#include "format/text_codec.h"

#include <algorithm>

namespace jet {
namespace {

constexpr Byte kMark0 = 0xFF;
constexpr Byte kMark1 = 0xFE;
constexpr char16_t kByteOrderMark = 0xFEFF;

std::u16string DecodeCompressed(ByteView stored) {
    const Byte* const end = stored.data() + stored.size();
    const Byte* const zero = std::find(stored.data() + 2, end, Byte{0});
    std::u16string text(static_cast<std::size_t>(zero - stored.data()) - 2, u'\0');
    std::copy(stored.data() + 2, zero, text.begin());
    if (zero == end) return text; // as most texts do
    text.reserve(stored.size());
    bool narrow = true;
    for (auto i = static_cast<std::size_t>(zero - stored.data()); i < stored.size();) {
        if (stored[i] == 0) {
            narrow = !narrow;
            ++i;
        } else if (narrow) {
            text.push_back(stored[i]);
            ++i;
        } else {
            if (i + 1 >= stored.size()) break;
            text.push_back(Load16(stored.data() + i));
            i += 2;
        }
    }
    return text;
}

/// Whether all characters are 1 to 255. Without a way out of the loop it works on many characters at a time.
bool FitsBytes(std::u16string_view text) {
    unsigned all = 0;
    for (const char16_t c : text) all |= c | (c - 1U); // 0 sets every bit
    return all <= 0xFF;
}

} // namespace

std::u16string DecodeText(ByteView stored) {
    if (stored.size() >= 2 && stored[0] == kMark0 && stored[1] == kMark1) return DecodeCompressed(stored);
    std::u16string text(stored.size() / 2, u'\0');
    for (std::size_t i = 0; i < text.size(); ++i) text[i] = Load16(stored.data() + 2 * i);
    return text;
}

Bytes EncodeText(std::u16string_view text, bool compress) {
    constexpr std::size_t kShortest = 3;
    constexpr std::size_t kLongest = 1024;
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(1);
    Bytes stored;
    if (compress && text.size() >= kShortest && text.size() <= kLongest && FitsBytes(text)) {
        stored.resize(2 + text.size());
        stored[0] = kMark0;
        stored[1] = kMark1;
        std::transform(text.begin(), text.end(), stored.begin() + 2, [](char16_t c) { return static_cast<Byte>(c); });
        return stored;
    }
    stored.resize(2 * text.size());
    for (std::size_t i = 0; i < text.size(); ++i) Store16(stored.data() + 2 * i, text[i]);
    return stored;
}

} // namespace jet
