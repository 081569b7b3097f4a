#include "quorvex/row_writer.h"

#include "quorvex/file_system.h"
#include "support/error.h"
#include "support/files.h"

#include <iostream>

namespace quorvex::cli {

RowWriter::RowWriter(const std::filesystem::path& file, std::uint64_t offset)
    : file_(file), out_(&stream_), size_(offset) {
    const bool ready = offset == 0 || CutFile(file, offset);
    if (ready) stream_.open(file, std::ios::binary | (offset != 0 ? std::ios::app : std::ios::trunc));
    if (!stream_.is_open()) throw support::Error(support::kErrorPathAccess, L"cannot write " + support::FromPath(file));
}

RowWriter::RowWriter() : out_(&std::cout) {}

void RowWriter::Write(std::string_view rows) {
    out_->write(rows.data(), static_cast<std::streamsize>(rows.size()));
    out_->flush();
    if (*out_) {
        size_ += rows.size();
        return;
    }
    if (out_ == &std::cout) throw support::Error(support::kErrorDiskFull, L"the output was closed or is full");
    stream_.close();
    CutFile(file_, size_); // the rows that are whole stay readable either way
    throw support::Error(support::kErrorDiskFull, L"no more can be written to " + support::FromPath(file_));
}

} // namespace quorvex::cli
