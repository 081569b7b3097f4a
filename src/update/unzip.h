#pragma once

#include "support/platform.h"
#include "update/update_windows.h"

#include <string>

namespace quorvex::update {

enum class Extraction {
    Done,
    Refused, // the archive is damaged, or nothing that a package may be: it can never be unpacked
    Failed,  // for another reason, such as a full disk; it may succeed later
};

// Unpacks an archive into a folder, all of it or nothing. Shows a status window with the title and the text while it
// works, unless the title is empty. An archive that holds anything but files named like an update's database
// (HasUpdateLayout) is refused before anything is written. The second setting has no meaning yet and must be empty. The
// reason of a failure is in the error log; nothing is shown. The archive is never deleted.
Extraction ExtractArchive(support::Platform& platform, UpdateWindows& windows, const std::wstring& title,
                          const std::wstring& text, const std::wstring& archivePath,
                          const std::wstring& destinationFolder, const std::wstring& secondSetting, bool overwrite);

// The same; true only if every step succeeded.
bool Unzip(support::Platform& platform, UpdateWindows& windows, const std::wstring& title, const std::wstring& text,
           const std::wstring& archivePath, const std::wstring& destinationFolder, const std::wstring& secondSetting,
           bool overwrite);

} // namespace quorvex::update
