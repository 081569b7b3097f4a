#include "cut_storage.h"

#include "jet/error.h"

#include <algorithm>

namespace jet::testing {

template <typename Effect>
void CutStorage::Call(const Effect& effect) {
    if (cut_) throw Error(ErrorCode::kIo, "the power is off");
    const bool doomed = calls_++ == doomed_ && fate_ != Fate::kNone;
    const bool cuts = fate_ == Fate::kCutBefore || fate_ == Fate::kCutAfter;
    const bool after = fate_ == Fate::kCutAfter || fate_ == Fate::kErrorAfter;
    if (!doomed || after) effect();
    if (!doomed) return;
    cut_ = cuts;
    throw Error(ErrorCode::kIo, cuts ? "the power goes off" : "one call fails");
}

class CutFile final : public File {
  public:
    CutFile(CutStorage& storage, std::shared_ptr<CutStorage::Node> node, OpenMode mode)
        : storage_(storage), node_(std::move(node)), reads_(mode == OpenMode::kReadDenyWrite),
          writes_(mode == OpenMode::kWriteDenyWrite || mode == OpenMode::kCreateNew) {
        node_->readers += reads_ ? 1 : 0;
        node_->writers += writes_ ? 1 : 0;
    }
    ~CutFile() override {
        node_->readers -= reads_ ? 1 : 0;
        node_->writers -= writes_ ? 1 : 0;
    }
    CutFile(const CutFile&) = delete;
    CutFile& operator=(const CutFile&) = delete;

    std::uint64_t Size() override {
        storage_.Call([] {});
        return node_->live.size();
    }
    std::size_t ReadAt(std::uint64_t offset, ByteSpan buffer) override {
        storage_.Call([] {});
        const Bytes& live = node_->live;
        const std::size_t start = std::min(static_cast<std::size_t>(offset), live.size());
        const std::size_t count = std::min(buffer.size(), live.size() - start);
        std::copy_n(live.data() + start, count, buffer.data());
        return count;
    }
    void WriteAt(std::uint64_t offset, ByteView data) override {
        Change({static_cast<std::size_t>(offset), Bytes(data.begin(), data.end()), false});
    }
    void Resize(std::uint64_t size) override { Change({static_cast<std::size_t>(size), {}, true}); }
    void Flush() override {
        try {
            storage_.Call([this] {
                for (const auto& change : node_->pending) CutStorage::Apply(node_->durable, change);
                node_->pending.clear();
            });
        } catch (const Error&) {
            // After a failed flush a system may take what it could not write for written.
            if (!storage_.isCut()) node_->pending.clear();
            throw;
        }
    }
    bool TryLock(LockByte, bool) override { return true; }
    void Unlock(LockByte) noexcept override {}

  private:
    void Change(CutStorage::Change change) {
        storage_.Call([&] {
            CutStorage::Apply(node_->live, change);
            node_->pending.push_back(std::move(change));
        });
    }

    CutStorage& storage_;
    std::shared_ptr<CutStorage::Node> node_;
    bool reads_;
    bool writes_;
};

CutStorage::CutStorage(const Image& image, const Habits& habits) : habits_(habits) {
    for (const auto& [path, bytes] : image) {
        auto node = std::make_shared<Node>();
        node->live = bytes;
        node->durable = bytes;
        names_[path] = node;
    }
    durableNames_ = names_;
}

std::unique_ptr<File> CutStorage::Open(const Path& path, OpenMode mode) {
    std::shared_ptr<Node> node;
    const auto found = names_.find(path);
    if (found != names_.end()) node = found->second;
    const bool makes = mode == OpenMode::kCreateNew || mode == OpenMode::kSideFile;
    if (!node && !makes) throw Error(ErrorCode::kFileNotFound, "no such file");
    if (node && mode == OpenMode::kCreateNew) throw Error(ErrorCode::kFileExists, "the file exists");
    Call([&] {
        if (node) return;
        node = std::make_shared<Node>();
        SetName(path, node);
    });
    const bool shared = mode == OpenMode::kReadDenyWrite;
    const bool exclusive = mode == OpenMode::kWriteDenyWrite;
    if ((shared && node->writers > 0) || (exclusive && node->writers + node->readers > 0)) {
        throw Error(ErrorCode::kInUse, "in use");
    }
    return std::make_unique<CutFile>(*this, node, mode);
}

bool CutStorage::Exists(const Path& path) {
    Call([] {});
    return names_.contains(path);
}

void CutStorage::Remove(const Path& path) {
    Call([&] {
        if (names_.contains(path)) SetName(path, nullptr);
    });
}

void CutStorage::Rename(const Path& from, const Path& to) {
    Call([&] {
        const auto node = names_.at(from);
        SetName(to, node);
        SetName(from, nullptr);
    });
}

void CutStorage::FlushNames(const Path&) {
    Call([this] {
        durableNames_ = names_;
        pendingNames_.clear();
    });
}

void CutStorage::SetName(const Path& path, const std::shared_ptr<Node>& node) {
    const auto set = [&](Names& names) {
        if (node) {
            names[path] = node;
        } else {
            names.erase(path);
        }
    };
    set(names_);
    if (habits_.namesDurable) {
        set(durableNames_);
    } else {
        pendingNames_.push_back({path, node});
    }
}

void CutStorage::Apply(Bytes& bytes, const Change& change) {
    const std::size_t offset = change.offset;
    if (change.resizes) {
        bytes.resize(offset);
        return;
    }
    if (bytes.size() < offset + change.bytes.size()) bytes.resize(offset + change.bytes.size());
    std::copy(change.bytes.begin(), change.bytes.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

/// Of each unflushed change all, nothing or some pieces. Since pieces are kept or lost one by one, changes also reach
/// the medium in any order.
Bytes CutStorage::Torn(const Node& node, std::mt19937& random) const {
    Bytes bytes = node.durable;
    for (const Change& change : node.pending) {
        const auto share = random() % 3;
        if (change.resizes || share == 0) {
            if (random() % 2 == 0) Apply(bytes, change);
            continue;
        }
        for (std::size_t done = 0; done < change.bytes.size();) {
            const std::size_t piece =
                std::min(habits_.tear - (change.offset + done) % habits_.tear, change.bytes.size() - done);
            const auto start = change.bytes.begin() + static_cast<std::ptrdiff_t>(done);
            if (share == 1 || random() % 2 == 0) {
                Apply(bytes, {change.offset + done, Bytes(start, start + static_cast<std::ptrdiff_t>(piece)), false});
            }
            done += piece;
        }
    }
    return bytes;
}

CutStorage::Image CutStorage::AfterCut(std::mt19937& random) const {
    Names names = durableNames_;
    for (const NameChange& change : pendingNames_) {
        if (random() % 2 == 0) continue;
        if (change.node) {
            names[change.path] = change.node;
        } else {
            names.erase(change.path);
        }
    }
    Image image;
    for (const auto& [path, node] : names) image[path] = Torn(*node, random);
    return image;
}

} // namespace jet::testing
