#pragma once

#include "support/platform.h"

#include <string>

namespace quorvex::update {

// Unpacks an archive into a folder; true only when every step succeeded. The status window is shown when the title is
// not empty, with the text and what is being done, and is gone afterwards in every case. The second setting has no
// meaning yet and must be empty. An archive that holds a file named like the data itself is refused: it would replace
// the data. The reason of a failure is in the error log; nothing is shown, the archive stays, and nothing is left of a
// failed extraction.
bool Unzip(support::Platform& platform, const std::wstring& title, const std::wstring& text,
           const std::wstring& archivePath, const std::wstring& destinationFolder, const std::wstring& secondSetting,
           bool overwrite);

} // namespace quorvex::update
