#pragma once

#include "base/row_pointer.h"
#include "storage/pager.h"

#include <functional>
#include <optional>

namespace jet {

/// The map of the file's free pages.
inline constexpr RowId kGlobalMapRow{kGlobalMapPage, 0};

/// A set of page numbers kept as a row on a map page. A map without a row (pointer 0) is empty.
class UsageMap {
  public:
    UsageMap(Pager& pager, std::uint32_t pointer) : pager_(&pager), at_(RowIdFromPointer(pointer)) {}

    bool exists() const { return at_.page != 0; }
    std::uint32_t pointer() const { return PointerFromRowId(at_); }
    /// The row that holds the map.
    RowId row() const { return at_; }

    /// All pages of the set, ascending. Throws kCorrupt if one is past the end of the file.
    std::vector<PageNo> Pages() const;
    /// The pages of the set that are inside the file, ascending.
    std::vector<PageNo> PagesInFile() const;
    bool Contains(PageNo page) const;
    /// The highest page of the set below `below`, or 0.
    PageNo HighestBelow(PageNo below) const;
    /// The bitmap pages (type 0x05) that the map uses.
    std::vector<PageNo> BitmapPages() const;
    bool isInline() const;
    /// Whether the page lies below the first one for which an inline map has a bit.
    bool Precedes(PageNo page) const;

    // Changes; a statement must be open. `newPage` returns a zeroed page that is already marked as used.
    using NewPage = std::function<PageEdit()>;
    void Add(PageNo page, const NewPage& newPage);
    void Remove(PageNo page);
    /// Sets or clears the bit of a page. False, and nothing changed, if the map does not cover the page.
    bool Change(PageNo page, bool member);
    /// Makes `bitmap`, which the caller has filled, the bitmap of the pages around `page`. Throws kCorrupt if the map
    /// has no reference for them or is inline.
    void Attach(PageNo page, PageNo bitmap);
    /// Empties the map and gives it the form with bitmap pages.
    void ResetToReferences();

  private:
    /// A map row's fields. Valid while `page` is held.
    struct Row {
        PageRef page;
        ByteView bytes;

        bool isInline() const { return bytes[kMapKind] == kInlineMap; }
        PageNo base() const { return Load32(bytes.data() + kMapBase); }
        ByteView bitmap() const { return bytes.subspan(kMapBits); }
        bool Covers(PageNo number) const { return number >= base() && number - base() < bitmap().size() * 8; }
        std::size_t references() const { return (bytes.size() - kMapReferences) / kMapReferenceSize; }
        PageNo Reference(std::size_t k) const { return Load32(bytes.data() + kMapReferences + kMapReferenceSize * k); }
        /// The bitmap page for a page; 0 if there is none.
        PageNo ReferenceFor(PageNo number) const {
            const std::size_t k = number / kBitmapPageBits;
            return k < references() ? Reference(k) : 0;
        }
    };
    std::optional<Row> Read() const;
    Byte* EditRow(const PageEdit& page) const;
    template <typename Action>
    void EachPage(const Action& action) const;
    void Rebase(const Row& row, PageNo page, const NewPage& newPage);

    Pager* pager_;
    RowId at_;
};

} // namespace jet
