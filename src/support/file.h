#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex::support {

// One open file, closed with the object. The system's own calls on both platforms: the C library of Windows refuses
// long paths, and follows the locale and the text mode of the host.
class File {
  public:
    enum class Mode {
        kRead,         // an existing file, shared with everybody
        kReadFinished, // an existing file, refused while somebody writes it (which only Windows can tell)
        kCreate        // a new or emptied file for writing
    };

    // Throws Error if the file cannot be opened or created.
    File(const std::wstring& path, Mode mode);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    // Bytes. Throws Error.
    std::uint64_t Size() const;
    // Returns the bytes read, fewer than count only at the end of the file. Throws Error.
    std::size_t ReadAt(std::uint64_t offset, char* bytes, std::size_t count) const;
    // Writes at the end of what was written so far. Throws Error.
    void Write(std::string_view bytes);

  private:
    std::wstring path_; // for error texts
    std::intptr_t handle_;
};

} // namespace quorvex::support
