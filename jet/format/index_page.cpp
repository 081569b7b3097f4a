#include "format/index_page.h"

#include "jet/error.h"

#include <algorithm>
#include <cstring>

namespace jet {

IndexPage::IndexPage(PageRef page, PageNo owner) : page_(std::move(page)) {
    const Byte* const p = page_.data();
    if (!IsPage(p, kIndexLeafPage) && !IsPage(p, kIndexNodePage)) {
        ThrowCorrupt("an index page has another type", number());
    }
    if (Load32(p + kIndexOwner) != owner) ThrowCorrupt("an index page belongs to another table", number());
    leaf_ = p[kPageType] == kIndexLeafPage;
    prefix_ = Load16(p + kIndexPrefix);
    if (!page_.ends()) page_.KeepEnds(CheckedEnds());
    ends_ = page_.ends();
}

std::shared_ptr<const EntryEnds> IndexPage::CheckedEnds() const {
    const Byte* const p = page_.data();
    // A set bit marks the end of an entry, and the end of the area itself has a bit.
    constexpr std::size_t kBitmapBytes = kIndexArea / 8 + 1;
    std::array<std::uint16_t, 8 * kBitmapBytes> ends;
    std::size_t count = 0;
    std::size_t start = 0;
    std::size_t least = Trailer() + std::max<std::size_t>(prefix_, 1);
    EachBit(ByteView(p + kIndexBitmap, kBitmapBytes), [&](std::size_t end) {
        if (end > kIndexArea || end - start < least) ThrowCorrupt("an index entry has a wrong length", number());
        ends[count++] = static_cast<std::uint16_t>(end);
        start = end;
        least = Trailer();
    });
    if (kIndexArea - start != Load16(p + kIndexFree)) ThrowCorrupt("an index page's free space is wrong", number());
    return std::make_shared<EntryEnds>(ends.begin(), ends.begin() + count);
}

RowId IndexPage::Row(std::size_t entry) const {
    const Byte* const p = Area() + (*ends_)[entry] - Trailer();
    return {Load24Big(p), p[3]};
}

void IndexPage::AppendRows(std::size_t from, std::size_t to, std::vector<RowId>& rows) const {
    const Byte* const trailers = Area() - Trailer();
    for (std::size_t i = from; i < to; ++i) {
        const Byte* const p = trailers + (*ends_)[i];
        rows.push_back({Load24Big(p), p[3]});
    }
}

PageNo IndexPage::Child(std::size_t entry) const {
    return Load32Big(Area() + (*ends_)[entry] - kEntryChild);
}

Bytes IndexPage::Key(std::size_t entry) const {
    const ByteView stored(Area() + Start(entry), (*ends_)[entry] - Trailer() - Start(entry));
    if (entry == 0 || prefix_ == 0) return Bytes(stored.begin(), stored.end());
    Bytes key;
    key.reserve(prefix_ + stored.size());
    AppendBytes(key, ByteView(Area(), prefix_));
    AppendBytes(key, stored);
    return key;
}

std::strong_ordering IndexPage::Compare(std::size_t entry, const IndexPosition& position) const {
    const auto part = [](const Byte* a, const Byte* b, std::size_t size) {
        return size == 0 ? 0 : std::memcmp(a, b, size);
    };
    const std::size_t start = Start(entry);
    const std::size_t stored = (*ends_)[entry] - Trailer() - start;
    const std::size_t shared = entry == 0 ? 0 : prefix_;
    const std::size_t head = std::min(shared, position.key.size());
    int order = part(Area(), position.key.data(), head);
    if (order == 0) {
        const std::size_t rest = std::min(stored, position.key.size() - head);
        if (shared == head) order = part(Area() + start, position.key.data() + head, rest);
    }
    if (order != 0) return order <=> 0;
    if (shared + stored != position.key.size()) return shared + stored <=> position.key.size();
    return Row(entry) <=> position.row;
}

std::size_t IndexPage::LowerBound(const IndexPosition& position) const {
    std::size_t low = 0;
    std::size_t high = size();
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        if (Compare(middle, position) < 0) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

PageNo IndexPage::ChildFor(const IndexPosition& position) const {
    const std::size_t entry = LowerBound(position);
    if (entry < size()) return Child(entry);
    if (tail() != 0) return tail();
    return size() == 0 ? 0 : Child(size() - 1);
}

} // namespace jet
