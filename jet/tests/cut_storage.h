#pragma once

#include "jet/path.h"
#include "jet/storage.h"

#include <map>
#include <random>
#include <vector>

namespace jet::testing {

/// A storage that keeps what was not flushed in a buffer, as an operating system does, and knows what a power cut may
/// leave of it. One call can be made to fail, before or after its effect, or be the last one before the cut.
class CutStorage final : public Storage {
  public:
    using Image = std::map<Path, Bytes>;
    struct Habits {
        bool namesDurable = false; ///< names are on the medium at once, as on a journaling file system
        std::size_t tear = 512;    ///< a piece of this size is written whole or not at all
    };

    CutStorage(const Image& image, const Habits& habits);

    std::unique_ptr<File> Open(const Path& path, OpenMode mode) override;
    bool Exists(const Path& path) override;
    void Remove(const Path& path) override;
    void Rename(const Path& from, const Path& to) override;
    void FlushNames(const Path& path) override;

    enum class Fate { kNone, kCutBefore, kCutAfter, kErrorBefore, kErrorAfter };
    /// What becomes of the call with this number, counted from 0 over all calls, reading ones included.
    void Doom(std::size_t call, Fate fate) {
        doomed_ = call;
        fate_ = fate;
    }
    std::size_t calls() const { return calls_; }
    bool isCut() const { return cut_; }
    /// Every file as a power cut now would leave it: what was flushed, and of the rest an arbitrary part.
    Image AfterCut(std::mt19937& random) const;

  private:
    friend class CutFile;
    struct Change {
        std::size_t offset = 0;
        Bytes bytes;
        bool resizes = false; ///< to `offset`
    };
    struct Node {
        Bytes live;
        Bytes durable;
        std::vector<Change> pending;
        int readers = 0;
        int writers = 0;
    };
    struct NameChange {
        Path path;
        std::shared_ptr<Node> node; ///< null: removed
    };
    using Names = std::map<Path, std::shared_ptr<Node>>;

    /// Runs the effect of a call as its fate will have it.
    template <typename Effect>
    void Call(const Effect& effect);
    void SetName(const Path& path, const std::shared_ptr<Node>& node);
    static void Apply(Bytes& bytes, const Change& change);
    Bytes Torn(const Node& node, std::mt19937& random) const;

    Habits habits_;
    Names names_;
    Names durableNames_;
    std::vector<NameChange> pendingNames_;
    std::size_t calls_ = 0;
    std::size_t doomed_ = 0;
    Fate fate_ = Fate::kNone;
    bool cut_ = false;
};

} // namespace jet::testing
