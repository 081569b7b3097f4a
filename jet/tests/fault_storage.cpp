#include "fault_storage.h"

#include "jet/error.h"

namespace jet::testing {

class FaultFile final : public File {
  public:
    FaultFile(FaultStorage& storage, std::unique_ptr<File> file) : storage_(storage), file_(std::move(file)) {}

    std::uint64_t Size() override { return file_->Size(); }
    std::size_t ReadAt(std::uint64_t offset, ByteSpan buffer) override { return file_->ReadAt(offset, buffer); }

    void WriteAt(std::uint64_t offset, ByteView data) override {
        const bool torn = storage_.Step(offset + data.size() > file_->Size());
        const ByteView part = torn ? data.first(data.size() / 2) : data;
        file_->WriteAt(offset, part);
        if (torn) throw Error(ErrorCode::kIo, "killed in the middle of a write");
    }

    void Resize(std::uint64_t size) override {
        storage_.Step();
        file_->Resize(size);
    }

    void Flush() override {
        storage_.Step();
        file_->Flush();
    }

    bool TryLock(LockByte byte, bool exclusive) override { return file_->TryLock(byte, exclusive); }
    void Unlock(LockByte byte) noexcept override { file_->Unlock(byte); }

  private:
    FaultStorage& storage_;
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

std::unique_ptr<File> FaultStorage::Open(const Path& path, OpenMode mode) {
    const bool writes = mode != OpenMode::kReadDenyWrite && mode != OpenMode::kSideFileRead;
    if (writes && readOnly) throw Error(ErrorCode::kAccessDenied, "read-only");
    if (!base_.Exists(path)) Step(true);
    auto file = base_.Open(path, mode);
    return std::make_unique<FaultFile>(*this, std::move(file));
}

void FaultStorage::Remove(const Path& path) {
    Step();
    base_.Remove(path);
}

void FaultStorage::Rename(const Path& from, const Path& to) {
    if (readOnly) throw Error(ErrorCode::kAccessDenied, "read-only");
    Step();
    base_.Rename(from, to);
}

} // namespace jet::testing
