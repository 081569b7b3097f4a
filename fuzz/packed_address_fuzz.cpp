#include "localdata/packed_address.h"
#include "support/error.h"
#include "support/text.h"

#include <cstdint>
#include <cstdlib>

namespace {

using namespace quorvex;

void Check(bool holds) {
    if (!holds) std::abort();
}

// A table file, or a complaint; what it scrambles in the letters of the table it takes back.
localdata::SubstitutionTable TableOf(std::string_view bytes) {
    try {
        return localdata::SubstitutionTable::Parse(bytes);
    } catch (const support::Error& error) {
        Check(error.Description().find(L"line ") != std::wstring::npos);
        return {};
    }
}

} // namespace

// The input is a table file, a NUL, and a stored text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t nul = input.find('\0');
    const localdata::SubstitutionTable table = TableOf(input.substr(0, nul));
    const std::wstring stored =
        support::FromUtf8(nul == std::string_view::npos ? std::string_view() : input.substr(nul + 1));
    const std::wstring plain = table.Unscramble(stored);
    Check(plain.size() == stored.size() && table.Scramble(plain).size() == plain.size());

    const localdata::PackedAddress packed = localdata::SplitPackedAddress(plain);
    const std::wstring street = localdata::StreetPart(packed.common);
    Check(street.find(L'|') == std::wstring::npos);
    for (const std::wstring_view premise : packed.premises) {
        Check(premise.find(L'!') == std::wstring::npos);
        const std::wstring line = localdata::DisplayLine(premise, street);
        Check(line.find(L'|') == std::wstring::npos && support::Trim(line).size() == line.size());
        for (const std::wstring& value : localdata::AddressRecord(premise, packed.common)) {
            Check(value.find(L'|') == std::wstring::npos && support::Trim(value).size() == value.size());
        }
    }
    for (const std::wstring& value : localdata::ThoroughfareRecord(plain)) {
        Check(value.find(L'|') == std::wstring::npos);
    }
    return 0;
}
