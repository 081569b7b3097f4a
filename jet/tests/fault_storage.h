#pragma once

#include "jet/memory_storage.h"

#include <functional>
#include <list>
#include <random>

namespace jet::testing {

/// A storage that fails on demand and knows what a power cut would leave.
class FaultStorage final : public Storage {
  public:
    explicit FaultStorage(MemoryStorage& base) : base_(base) {}

    std::unique_ptr<File> Open(const std::filesystem::path& path, OpenMode mode) override;
    bool Exists(const std::filesystem::path& path) override { return base_.Exists(path); }
    void Remove(const std::filesystem::path& path) override;

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
    /// Every file as a power cut would leave it: what was flushed, and of the rest an arbitrary part.
    void CutPower(std::mt19937& random);
    /// Names of paths that cannot be opened for writing.
    bool readOnly = false;

  private:
    friend class FaultFile;
    struct Write {
        std::filesystem::path path;
        std::function<void(Bytes&)> apply;
    };

    /// Counts a writing call; throws when its time has come. True: write half, then throw.
    bool Step(bool grows = false);
    void Note(const std::filesystem::path& path, std::function<void(Bytes&)> apply) {
        pending_.push_back({path, std::move(apply)});
    }
    void Flushed(const std::filesystem::path& path);

    MemoryStorage& base_;
    std::size_t calls_ = 0;
    std::size_t failAt_ = 0;
    Fault fault_ = Fault::kNone;
    std::list<Write> pending_;
    std::map<std::filesystem::path, Bytes> durable_;
};

} // namespace jet::testing
