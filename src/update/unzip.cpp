#include "update/unzip.h"

#include "localdata/data_file_names.h"
#include "support/error.h"
#include "support/files.h"
#include "support/log.h"
#include "support/text.h"
#include "zip/zip_archive.h"

#include <exception>

namespace quorvex::update {
namespace {

// The status window of one extraction; without a title there is none.
class StatusWindow {
  public:
    StatusWindow(support::Platform& platform, const std::wstring& title, const std::wstring& text)
        : platform_(platform), title_(title), text_(text) {}
    StatusWindow(const StatusWindow&) = delete;
    StatusWindow& operator=(const StatusWindow&) = delete;
    ~StatusWindow() {
        if (!title_.empty()) platform_.HideZipStatus();
    }

    void Show(const std::wstring& status) {
        if (title_.empty()) return;
        platform_.ShowZipStatus(title_, text_, status);
        platform_.PumpMessages();
    }

  private:
    support::Platform& platform_;
    std::wstring title_;
    std::wstring text_;
};

void RefuseDataFileNames(const zip::ZipArchive& archive) {
    for (const zip::ZipEntry& entry : archive.Entries()) {
        if (support::UpperCase(entry.name).starts_with(localdata::kDataFilePrefix)) {
            throw support::Error(zip::kErrorArchive,
                                 L"The archive would replace the data file \"" + entry.name + L"\"");
        }
    }
}

} // namespace

bool Unzip(support::Platform& platform, const std::wstring& title, const std::wstring& text,
           const std::wstring& archivePath, const std::wstring& destinationFolder, const std::wstring& secondSetting,
           bool overwrite) {
    StatusWindow status(platform, title, text);
    try {
        if (!secondSetting.empty()) {
            throw support::Error(zip::kErrorArchive, L"Archives with a password or mask are not supported");
        }
        const std::wstring name = support::FileNameOf(archivePath);
        status.Show(L"Opening " + name);
        zip::ZipArchive archive;
        archive.Open(archivePath);
        RefuseDataFileNames(archive);
        status.Show(L"Extracting " + name);
        archive.Extract(destinationFolder, overwrite);
        archive.Close();
        return true;
    } catch (const support::Error& error) {
        support::LogError(platform, error, {}, {archivePath});
    } catch (const std::exception& error) {
        support::LogError(platform, support::Error(support::kErrorInternal, support::FromUtf8(error.what())), {},
                          {archivePath});
    }
    return false;
}

} // namespace quorvex::update
