#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::service {

// The data keys that the service knows and what is left on them. Without any key everybody may ask and nothing is
// counted.
class Accounts {
  public:
    // Keys count in upper case, as the component sends them. credits: lookups left; nothing is without limit.
    void Add(std::wstring_view key, std::optional<std::int64_t> credits);
    // A text with one key to a line, a number of credits behind it where it has its own; "#" begins a remark. Throws
    // support::Error naming the line.
    void AddLines(std::wstring_view text, std::optional<std::int64_t> defaultCredits);

    struct Balance {
        std::wstring refusal; // why the key may not ask; empty when it may
        std::wstring text;    // for display; empty when nothing is counted
        bool low = false;     // worth offering more
    };
    // Takes one credit off. Keys that begin with "I" are used by several people and must name the user.
    Balance Take(const std::wstring& key, const std::wstring& userName);
    // After a lookup that cost nothing.
    Balance GiveBack(const std::wstring& key);

  private:
    using Credits = std::optional<std::int64_t>;
    static Balance BalanceOf(const Credits& credits);

    std::mutex mutex_;
    std::map<std::wstring, Credits> keys_;
};

} // namespace quorvex::service
