#include "object/stored_list.h"
#include "object/tag_reader.h"
#include "support/text.h"

#include <cstdint>
#include <cstdlib>

namespace {

using namespace quorvex;

void Check(bool holds) {
    if (!holds) std::abort();
}

} // namespace

// The input is a start tag, a NUL, an end tag, a NUL, and the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string input(reinterpret_cast<const char*>(data), size);
    const auto next = [&input] {
        const std::size_t nul = input.find('\0');
        const std::wstring piece = support::FromUtf8(std::string_view(input).substr(0, nul));
        input.erase(0, nul == std::string::npos ? nul : nul + 1);
        return piece;
    };
    const std::wstring start = next();
    const std::wstring end = next();
    const std::wstring text = support::FromUtf8(input);

    const object::TagMatch match = object::FindBetweenTags(text, start, end);
    Check(match.consumed <= text.size() && match.value.size() <= text.size());
    Check(match.found || (match.value.empty() && match.consumed == 0));
    if (!match.value.empty() && !end.empty()) Check(match.value.find(end) == std::wstring_view::npos);
    std::wstring rest = text;
    Check(object::GetBetweenTags(start, rest, end, true) == match.value);
    Check(text.ends_with(rest) && rest.size() == text.size() - match.consumed);

    // A walk over the list takes what repeated consumption takes, and comes to an end.
    object::StoredList list;
    list.Assign(text);
    rest = text;
    for (std::size_t step = 0; step <= text.size(); ++step) {
        const std::size_t before = rest.size();
        Check(list.TakeBetween(start, end) == object::GetBetweenTags(start, rest, end, true));
        Check(list.Rest() == rest);
        if (rest.size() == before) break;
    }
    return 0;
}
