#include "service/accounts.h"

#include "support/error.h"
#include "support/text.h"

#include <cmath>

namespace quorvex::service {
namespace {

constexpr std::int64_t kLowCredits = 10;

std::wstring KeyText(std::wstring_view key) {
    return support::UpperCase(support::Trim(key));
}

} // namespace

void Accounts::Add(std::wstring_view key, std::optional<std::int64_t> credits) {
    keys_[KeyText(key)] = credits;
}

void Accounts::AddLines(std::wstring_view text, std::optional<std::int64_t> defaultCredits) {
    std::wstring rest = support::ReplaceAll(support::ReplaceAll(text, L"\r", L""), L"\t", L" ");
    for (int number = 1; !rest.empty(); ++number) {
        const std::wstring line = support::NextField(rest, L"\n", true);
        std::wstring entry(support::Trim(line.substr(0, line.find(L'#'))));
        if (entry.empty()) continue;
        const std::wstring key = support::NextField(entry, L" ", true);
        const std::wstring_view own = support::Trim(entry);
        if (own.empty()) {
            Add(key, defaultCredits);
            continue;
        }
        const double credits = support::IsNumber(own) ? support::ParseNumber(own) : -1;
        if (credits < 0 || credits > 1e15 || credits != std::floor(credits)) {
            throw support::Error(support::kErrorBadFile, L"keys file, line " + std::to_wstring(number) +
                                                             L": a key and, behind a blank, a whole number of credits");
        }
        Add(key, static_cast<std::int64_t>(credits));
    }
}

Accounts::Balance Accounts::BalanceOf(const Credits& credits) {
    if (!credits) return {};
    return {{}, L"Credits left: " + std::to_wstring(*credits), *credits < kLowCredits};
}

Accounts::Balance Accounts::Take(const std::wstring& key, const std::wstring& userName) {
    const std::wstring name = KeyText(key);
    const bool nameless = name.starts_with(L'I') && support::Trim(userName).empty();
    const wchar_t* const kNameless = L"This data key is for internal use and needs a user name.";
    const std::lock_guard lock(mutex_);
    if (keys_.empty()) return {nameless ? kNameless : L"", {}, false};
    const auto found = keys_.find(name);
    if (found == keys_.end()) return {L"The data key is not known.", {}, false};
    Balance balance = BalanceOf(found->second);
    if (nameless) {
        balance.refusal = kNameless;
    } else if (found->second && *found->second <= 0) {
        balance.refusal = L"No credits are left on this data key.";
    } else if (found->second) {
        balance = BalanceOf(--*found->second);
    }
    return balance;
}

Accounts::Balance Accounts::GiveBack(const std::wstring& key) {
    const std::lock_guard lock(mutex_);
    const auto found = keys_.find(KeyText(key));
    if (found == keys_.end()) return {};
    if (found->second) ++*found->second;
    return BalanceOf(found->second);
}

} // namespace quorvex::service
