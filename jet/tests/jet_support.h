#pragma once

#include "format/table_def.h"
#include "insides.h"
#include "jet/text.h"
#include "storage/pager.h"

#include <filesystem>
#include <string>
#include <vector>

namespace jet::testing {

inline constexpr std::u16string_view kPassword = u"lanternfox";

/// A file of the sample data folder.
std::filesystem::path Sample(const char* name);
/// A sample file's bytes.
Bytes ReadBytes(const std::filesystem::path& path);
void WriteBytes(const std::filesystem::path& path, const Bytes& bytes);

/// A tab-separated truth file less its header line; fields are UTF-8.
std::vector<std::vector<std::string>> ReadTruth(const char* name);

inline std::u16string Wide(std::string_view ascii) {
    return std::u16string(ascii.begin(), ascii.end());
}

/// The condition "[column]='text'".
std::u16string Equals(std::u16string_view column, std::u16string_view text);

/// A value as text: NULL is "\N", numbers in their shortest form.
std::string Show(const Value& value);
/// All cells of a row.
std::vector<Value> Values(const Row& row, const TableDef& def);

/// The code of the Error that `action` throws, or nothing when it throws none.
template <typename Action>
std::optional<ErrorCode> CodeOf(const Action& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.code();
    }
    return std::nullopt;
}

/// Opens a database in a memory storage under the name "db".
Database OpenMemory(Storage& storage, bool writable = false);

/// A new folder, removed with everything in it.
class Folder {
  public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::filesystem::path operator/(const std::filesystem::path& name) const { return path_ / name; }
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

} // namespace jet::testing
