#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace quorvex::object {

// The records of the last list reply. Lines are taken off its front; the text itself is never moved, so a walk over a
// whole reply is linear in its length.
class StoredList {
  public:
    static constexpr std::size_t kIdentifierCount = 102; // positions 0 to 101

    // Begins a new list; the identifiers of the previous one stay until they are overwritten.
    void Assign(std::wstring text);
    void Clear() { Assign({}); }

    // What has not been taken yet.
    std::wstring_view Rest() const { return std::wstring_view(text_).substr(position_); }
    // GetBetweenTags with consumption on the rest.
    std::wstring TakeBetween(std::wstring_view startTag, std::wstring_view endTag);

    int HandedOut() const { return handedOut_; }
    void CountHandedOut() { ++handedOut_; }

    // Position 0 to 101; SetIdentifier throws support::Error beyond, Identifier gives an empty text.
    void SetIdentifier(std::size_t position, std::wstring identifier);
    std::wstring Identifier(std::size_t position) const;

  private:
    std::wstring text_;
    std::size_t position_ = 0;
    int handedOut_ = 0;
    std::array<std::wstring, kIdentifierCount> identifiers_;
};

} // namespace quorvex::object
