#include "fault_storage.h"

#include "jet/error.h"

namespace jet::testing {

class FaultFile final : public File {
  public:
    FaultFile(FaultStorage& storage, std::filesystem::path path, std::unique_ptr<File> file)
        : storage_(storage), path_(std::move(path)), file_(std::move(file)) {}

    std::uint64_t Size() override { return file_->Size(); }
    std::size_t ReadAt(std::uint64_t offset, ByteSpan buffer) override { return file_->ReadAt(offset, buffer); }

    void WriteAt(std::uint64_t offset, ByteView data) override {
        const bool torn = storage_.Step(offset + data.size() > file_->Size());
        const ByteView part = torn ? data.first(data.size() / 2) : data;
        file_->WriteAt(offset, part);
        storage_.Note(path_, [offset, bytes = Bytes(part.begin(), part.end())](Bytes& file) {
            const auto start = static_cast<std::ptrdiff_t>(offset);
            const auto end = static_cast<std::size_t>(start) + bytes.size();
            if (file.size() < end) file.resize(end);
            std::copy(bytes.begin(), bytes.end(), file.begin() + start);
        });
        if (torn) throw Error(ErrorCode::kIo, "killed in the middle of a write");
    }

    void Resize(std::uint64_t size) override {
        storage_.Step();
        file_->Resize(size);
        storage_.Note(
            path_, [size](Bytes& file) { file.resize(static_cast<std::size_t>(static_cast<std::ptrdiff_t>(size))); });
    }

    void Flush() override {
        storage_.Step();
        file_->Flush();
        storage_.Flushed(path_);
    }

  private:
    FaultStorage& storage_;
    std::filesystem::path path_;
    std::unique_ptr<File> file_;
};

bool FaultStorage::Step(bool grows) {
    const std::size_t call = calls_++;
    if (fault_ == Fault::kNone || call < failAt_) return false;
    if (fault_ == Fault::kTornKill && call == failAt_) return true;
    if (fault_ == Fault::kOneError) {
        if (call != failAt_) return false;
        throw Error(ErrorCode::kIo, "one call fails");
    }
    if (fault_ == Fault::kDiskFull) {
        if (!grows) return false;
        throw Error(ErrorCode::kDiskFull, "no room");
    }
    throw Error(ErrorCode::kIo, "no more writing");
}

std::unique_ptr<File> FaultStorage::Open(const std::filesystem::path& path, OpenMode mode) {
    const bool writes = mode != OpenMode::kReadDenyWrite && mode != OpenMode::kSideFileRead;
    if (writes && readOnly) throw Error(ErrorCode::kAccessDenied, "read-only");
    if (!base_.Exists(path)) Step(true);
    auto file = base_.Open(path, mode);
    if (!durable_.contains(path)) durable_[path] = base_.Get(path);
    return std::make_unique<FaultFile>(*this, path, std::move(file));
}

void FaultStorage::Remove(const std::filesystem::path& path) {
    Step();
    base_.Remove(path);
    durable_.erase(path);
    pending_.remove_if([&path](const Write& write) { return write.path == path; });
}

void FaultStorage::Flushed(const std::filesystem::path& path) {
    durable_[path] = base_.Get(path);
    pending_.remove_if([&path](const Write& write) { return write.path == path; });
}

void FaultStorage::CutPower(std::mt19937& random) {
    for (const Write& write : pending_) {
        if (random() % 2 == 0) write.apply(durable_[write.path]);
    }
    for (const auto& [path, bytes] : durable_) base_.Put(path, bytes);
    pending_.clear();
}

} // namespace jet::testing
