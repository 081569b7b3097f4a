#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace quorvex::http {

// A file in the making: its bytes gather under "TARGET.part", so that a process that is killed half-way leaves nothing
// that looks like a whole file. Gone when it is given up before Commit. Failures throw support::Error.
class PartialFile {
  public:
    explicit PartialFile(const std::wstring& target);
    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    void Append(std::string_view bytes);
    // Gives the file its name.
    void Commit();

  private:
    void Discard();

    const std::wstring target_;
    const std::wstring partial_;
    HANDLE file_;
};

} // namespace quorvex::http
