#pragma once

#include "localdata/status.h"
#include "object/quorvex.h"

#include <string>

namespace quorvex::update {

// Brings the local data up to date: lets the user choose, asks the service for packages, downloads them, then unpacks
// and applies every package in the data folder. See docs/updates.md for the stages, messages and log lines.

struct UpdateRequest {
    std::wstring dataFolder;
    bool internetIsAvailable = false; // offers the download in the dialog
    std::wstring caption;             // stands before the dialog's own caption
    localdata::LastUpdateDates dates;
    bool unattended = false; // no dialog: applies what is in the folder
};

// One run at a time and data folder. appliedCount receives the number of packages applied. True when the run went to
// its end, and every package was listed, downloaded and applied as asked; false when the user cancelled, too. Never
// throws: a fault is written to the error log, shown, and ends the run.
bool Update(object::Quorvex& object, const UpdateRequest& request, int& appliedCount);

// The host's call: with the object's data path and the dates of the files in it. Without a data path a message and
// false.
bool LMUpdateData(object::Quorvex& object, bool internetIsAvailable, const std::wstring& title);

} // namespace quorvex::update
