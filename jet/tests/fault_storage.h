#pragma once

#include "jet/memory_storage.h"
#include "jet/path.h"

namespace jet::testing {

/// A storage that fails on demand, as when a process is killed or a disk is full. For power cuts see CutStorage.
class FaultStorage final : public Storage {
  public:
    explicit FaultStorage(MemoryStorage& base) : base_(base) {}

    std::unique_ptr<File> Open(const Path& path, OpenMode mode) override;
    bool Exists(const Path& path) override { return base_.Exists(path); }
    void Remove(const Path& path) override;
    void Rename(const Path& from, const Path& to) override;
    void FlushNames(const Path&) override { Step(); }

    /// What happens at a writing call of this number (from 0) and after it.
    enum class Fault {
        kNone,
        kKill,     ///< this call and all later ones do nothing and throw: the process is gone
        kTornKill, ///< as kKill, but half of the data is written
        kDiskFull, ///< from this call on nothing may grow, until Heal
        kOneError, ///< this call alone fails
    };
    void FailAt(std::size_t call, Fault fault) {
        failAt_ = calls_ + call;
        fault_ = fault;
    }
    void Heal() { fault_ = Fault::kNone; }
    std::size_t calls() const { return calls_; }
    /// Names of paths that cannot be opened for writing.
    bool readOnly = false;

  private:
    friend class FaultFile;
    /// Counts a writing call; throws when its time has come. True: write half, then throw.
    bool Step(bool grows = false);
    MemoryStorage& base_;
    std::size_t calls_ = 0;
    std::size_t failAt_ = 0;
    Fault fault_ = Fault::kNone;
};

} // namespace jet::testing
