#include "service/accounts/networks.h"

#include "support/characters.h"
#include "support/error.h"
#include "support/text.h"

#include <algorithm>
#include <arpa/inet.h>
#include <optional>

namespace quorvex::service::accounts {
namespace {

using Address = std::array<std::uint8_t, 16>;

std::optional<Address> AddressOf(const std::string& text) {
    Address address{};
    if (inet_pton(AF_INET6, text.c_str(), address.data()) == 1) return address;
    address = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
    if (inet_pton(AF_INET, text.c_str(), address.data() + 12) == 1) return address;
    return std::nullopt;
}

} // namespace

Networks::Networks(const std::string& text) {
    std::wstring rest = support::FromUtf8(text);
    while (!rest.empty()) {
        const std::string part = support::ToUtf8(support::Trim(support::NextField(rest, L",", true)));
        if (part.empty()) continue;
        const std::size_t slash = part.find('/');
        const auto address = AddressOf(part.substr(0, slash));
        const bool short4 = part.find(':') == std::string::npos;
        const std::string bits = slash == std::string::npos ? (short4 ? "32" : "128") : part.substr(slash + 1);
        const bool digits = !bits.empty() && bits.size() < 4 && support::AllDigits(bits);
        if (!address || !digits || std::stoi(bits) > (short4 ? 32 : 128)) {
            throw support::Error(support::kErrorInvalidCall,
                                 support::FromUtf8("\"" + part + "\" is not an address or a network"));
        }
        networks_.push_back({*address, std::stoi(bits) + (short4 ? 96 : 0)});
    }
}

bool Networks::Hold(const std::string& text) const {
    const auto address = AddressOf(text);
    if (!address) return false;
    return std::any_of(networks_.begin(), networks_.end(), [&](const Network& network) {
        for (int bit = 0; bit < network.bits; ++bit) {
            const auto byte = static_cast<std::size_t>(bit / 8);
            const int mask = 0x80 >> (bit % 8);
            if (((network.address[byte] ^ (*address)[byte]) & mask) != 0) return false;
        }
        return true;
    });
}

} // namespace quorvex::service::accounts
