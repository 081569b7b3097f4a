#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string_view>

namespace quorvex::cli {

// An output file that always ends with a whole row: what fails to be written in full is cut off again.
class RowWriter {
  public:
    // Continues the file at that byte offset; 0 replaces the file. Throws support::Error.
    RowWriter(const std::filesystem::path& file, std::uint64_t offset);
    // Standard output; there nothing can be cut off.
    RowWriter();

    // Whole rows. Throws support::Error if not all of them could be written.
    void Write(std::string_view rows);

  private:
    std::filesystem::path file_;
    std::ofstream stream_;
    std::ostream* out_;
    std::uint64_t size_ = 0;
};

} // namespace quorvex::cli
