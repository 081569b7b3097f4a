#include "object/stored_list.h"

#include "object/tag_reader.h"
#include "support/error.h"

#include <utility>

namespace quorvex::object {

void StoredList::Assign(std::wstring text) {
    text_ = std::move(text);
    position_ = 0;
    handedOut_ = 0;
}

std::wstring StoredList::TakeBetween(std::wstring_view startTag, std::wstring_view endTag) {
    const TagMatch match = FindBetweenTags(Rest(), startTag, endTag);
    std::wstring value(match.value);
    position_ += match.consumed;
    return value;
}

void StoredList::SetIdentifier(std::size_t position, std::wstring identifier) {
    if (position >= identifiers_.size()) {
        throw support::Error(support::kErrorSubscript, L"Subscript out of range");
    }
    identifiers_[position] = std::move(identifier);
}

std::wstring StoredList::Identifier(std::size_t position) const {
    return position < identifiers_.size() ? identifiers_[position] : std::wstring();
}

} // namespace quorvex::object
