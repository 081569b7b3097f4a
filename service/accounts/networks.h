#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::service::accounts {

// A list of networks, "192.0.2.0/24, 2001:db8::/32, ::1".
class Networks {
  public:
    Networks() = default;
    // Throws support::Error naming the part that cannot be read.
    explicit Networks(const std::string& text);

    bool Empty() const { return networks_.empty(); }
    bool Hold(const std::string& address) const;

  private:
    struct Network {
        std::array<std::uint8_t, 16> address{}; // IPv4 as ::ffff:a.b.c.d
        int bits = 128;
    };
    std::vector<Network> networks_;
};

} // namespace quorvex::service::accounts
