#pragma once

#include "zip/zip_directory.h"

#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace quorvex::zip {

// A zip archive that is unpacked into a folder: Open, Extract, Close, in this order.
class ZipArchive {
  public:
    // Reads and checks the whole directory (see ReadZipDirectory). Throws Error.
    void Open(const std::wstring& file);
    void Open(std::unique_ptr<std::istream> archive);
    // Writes every entry into the folder, all or none: each first goes to a name of its own beside its place and only
    // when all are complete, with right size and CRC, do they take their names. Without overwrite an existing file is
    // an error. Throws Error; no half file is left.
    void Extract(const std::wstring& folder, bool overwrite);
    void Close();

    const std::vector<ZipEntry>& Entries() const { return entries_; }
    // The unpacked bytes of one entry. Throws Error when they are not those that the directory promises.
    void Unpack(const ZipEntry& entry, std::ostream& target);

  private:
    std::unique_ptr<std::istream> archive_;
    std::vector<ZipEntry> entries_;
};

} // namespace quorvex::zip
