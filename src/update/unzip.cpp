#include "update/unzip.h"

#include "support/error.h"
#include "support/files.h"
#include "support/log.h"
#include "support/text.h"
#include "update/package_name.h"
#include "zip/zip_archive.h"

#include <exception>

namespace quorvex::update {
namespace {

// The status window of one extraction. Without a title none is shown.
class StatusWindow {
  public:
    StatusWindow(support::Platform& platform, UpdateWindows& windows, const std::wstring& title,
                 const std::wstring& text)
        : platform_(platform), windows_(windows), title_(title), text_(text) {}
    StatusWindow(const StatusWindow&) = delete;
    StatusWindow& operator=(const StatusWindow&) = delete;
    ~StatusWindow() {
        if (!title_.empty()) windows_.HideZipStatus();
    }

    void Show(const std::wstring& status) {
        if (title_.empty()) return;
        windows_.ShowZipStatus(title_, text_, status);
        platform_.progress.PumpMessages();
    }

  private:
    support::Platform& platform_;
    UpdateWindows& windows_;
    std::wstring title_;
    std::wstring text_;
};

// Packages may come from anywhere: nothing but an update's database is ever written into the data folder.
void RequireUpdateNames(const zip::ZipArchive& archive) {
    for (const zip::ZipEntry& entry : archive.Entries()) {
        if (!HasUpdateLayout(entry.name, kDatabaseEnding)) {
            throw support::Error(zip::kErrorArchive,
                                 L"The archive holds \"" + entry.name + L"\", which is not part of an update");
        }
    }
}

} // namespace

Extraction ExtractArchive(support::Platform& platform, UpdateWindows& windows, const std::wstring& title,
                          const std::wstring& text, const std::wstring& archivePath,
                          const std::wstring& destinationFolder, const std::wstring& secondSetting, bool overwrite) {
    StatusWindow status(platform, windows, title, text);
    try {
        if (!secondSetting.empty()) {
            throw support::Error(zip::kErrorArchive, L"Archives with a password or mask are not supported");
        }
        const std::wstring name = support::FileNameOf(archivePath);
        status.Show(L"Opening " + name);
        zip::ZipArchive archive;
        archive.Open(archivePath);
        RequireUpdateNames(archive);
        status.Show(L"Extracting " + name);
        archive.Extract(destinationFolder, overwrite);
        archive.Close();
        return Extraction::Done;
    } catch (...) {
        const support::Error error = support::CurrentError();
        support::LogError(platform, error, {}, {archivePath});
        return error.Number() == zip::kErrorArchive ? Extraction::Refused : Extraction::Failed;
    }
}

bool Unzip(support::Platform& platform, UpdateWindows& windows, const std::wstring& title, const std::wstring& text,
           const std::wstring& archivePath, const std::wstring& destinationFolder, const std::wstring& secondSetting,
           bool overwrite) {
    return ExtractArchive(platform, windows, title, text, archivePath, destinationFolder, secondSetting, overwrite) ==
           Extraction::Done;
}

} // namespace quorvex::update
