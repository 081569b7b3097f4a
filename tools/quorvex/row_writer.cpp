#include "quorvex/row_writer.h"

#include "support/error.h"
#include "support/files.h"

#include <iostream>
#include <system_error>

namespace quorvex::cli {

RowWriter::RowWriter(const std::filesystem::path& file, std::uint64_t offset)
    : file_(file), out_(&stream_), size_(offset) {
    if (offset != 0) std::filesystem::resize_file(file, offset);
    stream_.open(file, std::ios::binary | (offset != 0 ? std::ios::app : std::ios::trunc));
    if (!stream_) throw support::Error(support::kErrorPathAccess, L"cannot write " + support::FromPath(file));
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
    std::error_code ignored; // the rows that are whole stay readable either way
    std::filesystem::resize_file(file_, size_, ignored);
    throw support::Error(support::kErrorDiskFull, L"no more can be written to " + support::FromPath(file_));
}

} // namespace quorvex::cli
