#pragma once

#include "object/quorvex.h"
#include "update/update_windows.h"

#include <string>

namespace quorvex::update {

// Brings the local data up to date: lets the user choose, asks the service for packages, downloads them, then unpacks
// and applies every package in the data folder. See docs/updates.md for the stages, messages and log lines.

struct UpdateRequest {
    std::wstring dataFolder;
    bool internetIsAvailable = false; // offers the download in the dialog
    std::wstring caption;             // precedes the dialog's own caption
    bool unattended = false;          // no dialog and no message: applies what is in the folder, the logs have the rest
};

// One run at a time for each data folder. appliedCount receives the number of packages applied. True if the run reached
// its end and every package was listed, downloaded and applied as asked; false also if the user cancelled. Never
// throws: a fault is written to the error log, shown, and ends the run.
bool Update(object::Quorvex& object, const Surroundings& surroundings, const UpdateRequest& request, int& appliedCount);

// The host's call, with the object's data path. Without a data path it shows a message and returns false.
bool LMUpdateData(object::Quorvex& object, const Surroundings& surroundings, bool internetIsAvailable,
                  const std::wstring& title);

} // namespace quorvex::update
