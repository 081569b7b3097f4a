#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::service {

// The update packages that the service hands out: files "UPDATE_" + kind letter + "_" + eight-digit date + ".zip" in
// one folder. The folder is looked through at every request, so that a package is published by putting it there.
class UpdateFolder {
  public:
    explicit UpdateFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}

    struct Package {
        std::string name;
        char kind = 'F';
        std::string date;
        std::uintmax_t size = 0; // bytes
    };
    // Packages of the kinds F, T and Z that are newer than the kind's date, oldest first. Without a date nothing of the
    // kind is listed, since the component applies nothing to data that never had one. Only names that end in ".zip" in
    // lower case: it cannot apply others.
    std::vector<Package> Newer(std::string_view fullDate, std::string_view streetDate,
                               std::string_view postZonDate) const;

    // The file of a package by its name, case ignored; nothing for any name of another form, so no path leads out of
    // the folder.
    std::optional<std::filesystem::path> Find(std::string_view name) const;

  private:
    std::filesystem::path folder_;
};

// Empty, or eight digits.
bool IsDateText(std::string_view text);

} // namespace quorvex::service
