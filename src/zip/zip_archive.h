#pragma once

#include "zip/zip_directory.h"
#include "zip/zip_source.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::zip {

using ZipTarget = std::function<void(std::string_view bytes)>;

// A zip archive that is unpacked into a folder: Open, Extract, Close, in this order.
class ZipArchive {
  public:
    // Reads and checks the whole directory (see ReadZipDirectory). Throws Error.
    void Open(const std::wstring& file);
    void Open(std::unique_ptr<ZipSource> archive);
    // Writes every entry into the folder, all or none. Each is first written under a name of its own; once all are
    // complete, with the right sizes and CRCs, they take their names together. Without overwrite an existing file is
    // an error. Throws Error and leaves the folder as it was.
    void Extract(const std::wstring& folder, bool overwrite);
    void Close();

    const std::vector<ZipEntry>& Entries() const { return entries_; }
    // Passes the unpacked bytes of one entry on, piece by piece. Throws Error if they are not those that the directory
    // promises, and what the target throws.
    void Unpack(const ZipEntry& entry, const ZipTarget& target);

  private:
    std::unique_ptr<ZipSource> archive_;
    std::vector<ZipEntry> entries_;
};

} // namespace quorvex::zip
