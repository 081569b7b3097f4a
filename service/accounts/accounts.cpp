#include "service/accounts/accounts.h"

#include "support/text.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace quorvex::service::accounts {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::int64_t kLowCredits = 10;
constexpr std::chrono::milliseconds kFresh(1000); // how long an account counts as just read
constexpr std::size_t kKnownKeys = 10000;
constexpr std::chrono::milliseconds kRetry(50);

const wchar_t* const kUnreachable = L"The accounts cannot be reached just now. Please try again later.";
const wchar_t* const kNoCredits = L"No credits are left on this data key.";

} // namespace

// An account as this node sees it: its latest balance, and how much it has asked lately.
struct Accounts::Live {
    std::mutex mutex;
    Account account;
    Networks networks;
    double tokens = 0; // requests it may still make at once
    Clock::time_point filled;

    // False if the account asks more often than it may.
    bool TakeToken() {
        if (!account.rate) return true;
        const auto most = static_cast<double>(std::max<std::int64_t>(1, *account.rate));
        const Clock::time_point now = Clock::now();
        const double seconds = std::chrono::duration<double>(now - filled).count();
        tokens = std::min(most, tokens + seconds * static_cast<double>(*account.rate));
        filled = now;
        if (tokens < 1) return false;
        tokens -= 1;
        return true;
    }

    void ShowBalance(Standing& standing) const {
        if (!account.credits) return;
        standing.text = L"Credits left: " + std::to_wstring(*account.credits);
        standing.low = *account.credits < kLowCredits;
    }
};

struct Accounts::Known {
    std::shared_ptr<Live> live; // null: no such key
    Clock::time_point until;
};

Accounts::Accounts(Settings settings) : settings_(std::move(settings)) {
    Refresh();
}

Accounts::~Accounts() {
    Stop();
}

void Accounts::Stop() {
    if (const auto charger = ChargerInUse()) charger->Stop();
}

void Accounts::Open() {
    const std::lock_guard lock(mutex_);
    if (!charger_) charger_ = std::make_shared<Charger>(settings_.database, settings_.node, settings_.patience);
}

std::shared_ptr<Charger> Accounts::ChargerInUse() const {
    const std::lock_guard lock(mutex_);
    return charger_;
}

void Accounts::Refresh() {
    if (Counting() || settings_.database.empty()) return;
    std::error_code ignored;
    if (IsPostgresName(settings_.database) || std::filesystem::exists(settings_.database, ignored)) Open();
}

bool Accounts::Counting() const {
    return ChargerInUse() != nullptr;
}

bool Accounts::Reachable() const {
    const auto charger = ChargerInUse();
    return !charger || charger->Reachable();
}

std::uint64_t Accounts::Transactions() const {
    const auto charger = ChargerInUse();
    return charger ? charger->Transactions() : 0;
}

void Accounts::Add(const std::vector<Key>& keys) {
    if (keys.empty()) return;
    AccountStore store(settings_.database);
    for (const Key& key : keys) store.Add(key.key, {"", key.credits, {}, ""}, settings_.node);
    Open();
}

// One reading of the database, tried again while it is lost and there is patience.
template <typename Work>
auto Accounts::Reading(Work work) {
    const Clock::time_point end = Clock::now() + settings_.patience;
    for (;;) {
        try {
            const std::lock_guard lock(readerMutex_);
            if (!reader_) reader_ = std::make_unique<AccountStore>(settings_.database);
            try {
                return work(*reader_);
            } catch (const DatabaseLost&) {
                reader_.reset();
                throw;
            }
        } catch (const DatabaseBusy&) {
            if (Clock::now() >= end) throw;
        } catch (const DatabaseLost&) {
            if (Clock::now() >= end) throw;
        }
        std::this_thread::sleep_for(kRetry);
    }
}

std::shared_ptr<Accounts::Live> Accounts::Find(const std::wstring& key, bool& unreachable) {
    const std::wstring text = support::UpperCase(support::Trim(key));
    {
        const std::lock_guard lock(mutex_);
        const auto known = known_.find(text);
        if (known != known_.end()) {
            // While the charger waits for a lost database, what was known of it goes on counting.
            if (Clock::now() < known->second.until || !charger_->Reachable()) return known->second.live;
        }
    }
    std::optional<Account> account;
    try {
        account = Reading([&text](AccountStore& store) { return store.Find(text); });
    } catch (const support::Error&) {
        unreachable = true;
        return nullptr;
    }
    const std::lock_guard lock(mutex_);
    if (known_.size() >= kKnownKeys) known_.clear();
    Known& known = known_[text];
    known.until = Clock::now() + kFresh;
    known.live = nullptr;
    if (!account) return nullptr;
    std::weak_ptr<Live>& shared = lives_[account->id];
    known.live = shared.lock();
    if (!known.live) shared = known.live = std::make_shared<Live>();
    const std::lock_guard liveLock(known.live->mutex);
    if (known.live->filled == Clock::time_point()) known.live->tokens = static_cast<double>(account->rate.value_or(0));
    known.live->networks = Networks(account->networks);
    known.live->account = std::move(*account);
    return known.live;
}

Accounts::Standing Accounts::Check(const std::wstring& key, const std::wstring& userName, const std::string& client) {
    Standing standing;
    const bool nameless = support::UpperCase(support::Trim(key)).starts_with(L'I') && support::Trim(userName).empty();
    const wchar_t* const kNameless = L"This data key is for internal use and needs a user name.";
    if (!Counting()) {
        if (nameless) standing.refusal = kNameless;
        return standing;
    }
    const auto live = Find(key, standing.unreachable);
    if (!live) {
        standing.refusal = standing.unreachable ? kUnreachable : L"The data key is not known.";
        return standing;
    }
    const std::lock_guard lock(live->mutex);
    standing.live = live;
    standing.name = live->account.name;
    live->ShowBalance(standing);
    if (live->account.disabled) {
        standing.refusal = L"This data key is disabled.";
    } else if (!live->networks.Empty() && !live->networks.Hold(client)) {
        standing.refusal = L"This data key cannot be used from this address.";
    } else if (nameless) {
        standing.refusal = kNameless;
    } else if (live->account.credits && *live->account.credits <= 0) {
        standing.refusal = kNoCredits;
    } else if (!live->TakeToken()) {
        standing.tooMany = true;
        standing.refusal = L"This data key is used too often. Please try again in a second.";
    }
    return standing;
}

void Accounts::Charge(Standing standing, std::string request, std::string what, std::function<void(Standing)> done) {
    const auto charger = ChargerInUse();
    if (!standing.live || !charger) return done(std::move(standing));
    const std::int64_t account = standing.live->account.id;
    charger->Take({account, std::move(request), std::move(what)},
                  [standing = std::move(standing), done = std::move(done)](std::optional<Charged> charged) mutable {
                      if (charged) {
                          const std::lock_guard lock(standing.live->mutex);
                          if (charged->left) standing.live->account.credits = charged->left;
                          standing.live->ShowBalance(standing);
                      }
                      if (!charged || !charged->taken) standing.refusal = charged ? kNoCredits : kUnreachable;
                      standing.unreachable = !charged;
                      done(std::move(standing));
                  });
}

void Accounts::Announce(const Node& node) {
    Reading([&node](AccountStore& store) {
        store.Announce(node);
        return true;
    });
}

std::vector<Node> Accounts::Nodes(std::int64_t seenAfter) {
    return Reading([seenAfter](AccountStore& store) { return store.Nodes(seenAfter); });
}

std::vector<Account> Accounts::List() {
    return Reading([](AccountStore& store) { return store.List(); });
}

} // namespace quorvex::service::accounts
