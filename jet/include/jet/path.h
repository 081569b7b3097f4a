#pragma once

#include <compare>
#include <concepts>
#include <filesystem>
#include <string>
#include <utility>

namespace jet {

/// A file's name as the system takes it. Made from whatever a path of the standard library can be made from; by itself
/// it needs none of that library's code, half a megabyte where it is linked in.
class Path {
  public:
    using Text = std::filesystem::path::string_type;

    Path() = default;
    Path(Text text) : text_(std::move(text)) {}
    Path(const std::filesystem::path& path) : text_(path.native()) {}
    template <std::convertible_to<std::filesystem::path> Source>
    Path(const Source& source) : text_(std::filesystem::path(source).native()) {}

    const Text& native() const { return text_; }
    const Text::value_type* c_str() const { return text_.c_str(); }
    /// What follows the last separator.
    Text filename() const {
        constexpr Text::value_type kSeparators[] = {'/', std::filesystem::path::preferred_separator, 0};
        const std::size_t at = text_.find_last_of(kSeparators);
        return at == Text::npos ? text_ : text_.substr(at + 1);
    }

    bool operator==(const Path&) const = default;
    auto operator<=>(const Path&) const = default;

  private:
    Text text_;
};

} // namespace jet
