#include "storage/sharing.h"

#include "jet/error.h"
#include "jet/text.h"

#include <algorithm>
#include <optional>
#include <string>
#include <thread>

namespace jet {
namespace {

using Clock = std::chrono::steady_clock;

/// For so long a writer keeps new readers out while it waits for those who have the file.
constexpr std::chrono::milliseconds kGateClosed{200};
/// Longer than the pause between a reader's tries, so that every waiting reader gets in.
constexpr std::chrono::milliseconds kReadersTime{30};
constexpr std::chrono::milliseconds kWriterPause{2};
/// On a busy machine a process may stand still for seconds between two tries. That counts as no more than this, or it
/// would give up having hardly tried.
constexpr std::chrono::milliseconds kMostBetweenTries{100};

std::string NameOf(const Path& path) {
    const auto name = path.filename();
    if constexpr (sizeof(Path::Text::value_type) == 1) return std::string(name.begin(), name.end());
    return ToUtf8(std::u16string(name.begin(), name.end()));
}

[[noreturn]] void ThrowInUse(const Path& path) {
    throw Error(ErrorCode::kInUse, "The database \"" + NameOf(path) + "\" is in use by someone else");
}

/// Runs an opening; nothing if the file is in use. A side file that is about to be removed may be refused for a moment.
template <typename Action>
auto Try(const Action& action, bool sideFile = false) -> std::optional<decltype(action())> {
    try {
        return action();
    } catch (const Error& error) {
        if (error.code() == ErrorCode::kInUse) return std::nullopt;
        if (sideFile && (error.code() == ErrorCode::kFileNotFound || error.code() == ErrorCode::kAccessDenied)) {
            return std::nullopt;
        }
        throw;
    }
}

/// One opening of the file, from the first try to the last.
class Opening {
  public:
    Opening(Storage& storage, const Path& path, bool writable, std::chrono::milliseconds wait)
        : storage_(storage), path_(path), journalPath_(Journal::PathFor(path)), writable_(writable), patience_(wait) {}

    std::unique_ptr<File> Run(bool ownTurn) {
        for (;;) {
            if (auto file = Try([&] { return storage_.Open(path_, Mode()); })) {
                const Journal::Finding found = Look(**file, ownTurn);
                if (!busy_ && found == Journal::Finding::kNothing) return std::move(*file);
                if (!busy_ && found == Journal::Finding::kForeign) SetAside();
                file->reset();
                if (!busy_ && Repair(ownTurn)) continue;
            }
            Wait();
        }
    }

  private:
    OpenMode Mode() const { return writable_ ? OpenMode::kWriteDenyWrite : OpenMode::kReadDenyWrite; }

    /// Looks at the journal, the file being open. Sets busy_ if a writer's turn keeps this opening out.
    Journal::Finding Look(File& file, bool ownTurn) {
        busy_ = false;
        if (!storage_.Exists(journalPath_)) return Journal::Finding::kNothing;
        if (!ownTurn) {
            const auto side = Try([&] { return storage_.Open(journalPath_, OpenMode::kSideFileRead); }, true);
            const LockByte byte = writable_ ? LockByte::kSession : LockByte::kGate;
            if (!side || !(*side)->TryLock(byte, false)) {
                busy_ = true;
                return Journal::Finding::kNothing;
            }
        }
        return Journal::Examine(storage_, journalPath_, file);
    }

    /// Rolls back the interrupted change; the file is not open here. False: somebody else has it.
    bool Repair(bool ownTurn) {
        patience_ = std::max<Clock::duration>(patience_, kRepairWait);
        try {
            const auto file = Try([&] { return storage_.Open(path_, OpenMode::kWriteDenyWrite); });
            if (!file) return false;
            // Somebody else may have been faster.
            if (Journal::Examine(storage_, journalPath_, **file) != Journal::Finding::kHot) return true;
            Journal journal(storage_, journalPath_);
            journal.Replay(**file);
            if (!ownTurn) journal.Remove();
            return true;
        } catch (const Error& error) {
            if (error.code() != ErrorCode::kAccessDenied) throw;
            throw Error(ErrorCode::kRecoveryNeeded,
                        "The last change to the database was interrupted and must be rolled back first, but the file "
                        "or its journal cannot be written");
        }
    }

    [[noreturn]] void SetAside() {
        const std::string journal = "The journal \"" + NameOf(journalPath_) + "\"";
        std::string where;
        try {
            where = NameOf(Journal::SetAside(storage_, journalPath_));
        } catch (const Error&) {
            throw Error(ErrorCode::kForeignJournal,
                        journal + " belongs to another state of the database file, which was "
                                  "perhaps replaced. It could not be renamed; move it away if the "
                                  "file is the right one");
        }
        throw Error(ErrorCode::kForeignJournal,
                    journal +
                        " belongs to another state of the database file, which was "
                        "perhaps replaced. The file was left as it is and the journal renamed "
                        "to \"" +
                        where +
                        "\". If the file is the right one, open it again and "
                        "delete the journal");
    }

    /// Lets some time pass, telling a writer that somebody waits.
    void Wait() {
        try {
            if (!announced_ && storage_.Exists(journalPath_)) {
                announced_ = storage_.Open(journalPath_, OpenMode::kSideFileRead);
                if (!writable_) announced_->TryLock(LockByte::kWaiting, false);
            }
            // A valid journal beside a busy file: somebody is rolling back, or writing.
            if (announced_ && Journal::LooksValid(*announced_)) {
                patience_ = std::max<Clock::duration>(patience_, kRepairWait);
            }
        } catch (const Error&) {
            announced_.reset(); // the writer need not know
        }
        if (waited_ >= patience_) ThrowInUse(path_);
        std::this_thread::sleep_for(writable_ ? kWriterPause : kOpenPause);
        const Clock::time_point now = Clock::now();
        waited_ += std::min<Clock::duration>(now - lastTry_, kMostBetweenTries);
        lastTry_ = now;
    }

    Storage& storage_;
    const Path& path_;
    Path journalPath_;
    bool writable_;
    bool busy_ = false;
    Clock::duration patience_;
    Clock::duration waited_{};
    Clock::time_point lastTry_ = Clock::now();
    std::unique_ptr<File> announced_;
};

} // namespace

std::unique_ptr<File> OpenDatabaseFile(Storage& storage, const Path& path, bool writable,
                                       std::chrono::milliseconds wait) {
    return Opening(storage, path, writable, wait).Run(false);
}

WriterTurn::WriterTurn(Storage& storage, Path path, Journal& journal)
    : storage_(storage), path_(std::move(path)), journal_(journal) {
    journal_.OpenFile();
    Lock(LockByte::kSession);
}

void WriterTurn::Lock(LockByte byte) {
    // Others look at a lock by taking it for a moment.
    constexpr int kTries = 500; // a second
    for (int tries = 0; !journal_.OpenFile().TryLock(byte, true); ++tries) {
        if (tries == kTries) ThrowInUse(path_);
        std::this_thread::sleep_for(kWriterPause);
    }
}

std::unique_ptr<File> WriterTurn::Take(std::chrono::milliseconds wait) {
    const Clock::time_point deadline = Clock::now() + wait;
    const auto open = [&] {
        return Try([&] { return Opening(storage_, path_, true, std::chrono::milliseconds(0)).Run(true); });
    };
    metReaders_ = false;
    for (;;) {
        const Clock::time_point roundEnd = std::min(Clock::now() + kGateClosed, deadline);
        while (!journal_.OpenFile().TryLock(LockByte::kGate, true)) {
            if (Clock::now() >= deadline) ThrowInUse(path_);
            std::this_thread::sleep_for(kWriterPause);
        }
        auto file = open();
        while (!file && Clock::now() < roundEnd) {
            metReaders_ = true;
            std::this_thread::sleep_for(kWriterPause);
            file = open();
        }
        if (file) {
            Settle();
            return std::move(*file);
        }
        journal_.OpenFile().Unlock(LockByte::kGate);
        if (Clock::now() >= deadline) ThrowInUse(path_);
        // Somebody reads for long, and the other readers must not wait for that.
        std::this_thread::sleep_for(kReadersTime);
    }
}

/// Until the database was held once, its last writer may have removed the journal file that is open here.
void WriterTurn::Settle() {
    if (settled_) return;
    journal_.OpenFileAgain();
    Lock(LockByte::kSession);
    Lock(LockByte::kGate);
    settled_ = true;
}

void WriterTurn::Give() {
    File& side = journal_.OpenFile();
    const bool waiting = !side.TryLock(LockByte::kWaiting, true);
    if (!waiting) side.Unlock(LockByte::kWaiting);
    side.Unlock(LockByte::kGate);
    if (waiting || metReaders_) std::this_thread::sleep_for(kReadersTime);
}

} // namespace jet
