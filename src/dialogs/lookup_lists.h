#pragma once

#include "object/quorvex.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvex::dialogs {

// The place lists of the advanced search: one file downloaded from the service and two small version files beside it,
// in the folder that the host names. Without a folder, or when it cannot be written to, the list lives in memory only.
// File errors and outcomes are noted for the user, never raised.
class LookupLists {
  public:
    explicit LookupLists(object::Quorvex& object) : object_(object) {}

    struct Note {
        std::wstring text;
        int style = 0;
    };
    // What the user is to be told since the last call; the window that waited looks as usual again when it is shown.
    std::vector<Note> TakeNotes() { return std::exchange(notes_, {}); }

    void SetPath(const std::wstring& folder);

    // Comma-joined values, trimmed, as last read by LoadLists.
    const std::wstring& Towns() const { return towns_; }
    const std::wstring& Counties() const { return counties_; }
    const std::wstring& PostcodeAreas() const { return postcodeAreas_; }

    // Reads the lists, downloading them first when there is no list file yet. False when there is nothing to read; why
    // is noted then.
    bool LoadLists();
    // Downloads and stores a new list; true when it can be used. quiet: only file errors are noted.
    bool UpdateList(bool quiet);
    // Records an announced version that differs from the stored one; true when the download button is to be shown.
    // Looks once per instance; an empty version does not count as a look.
    bool CheckForAddressUpdates(const std::wstring& announcedVersion);
    // True when a newer list was announced and not downloaded since.
    bool UpdateAnnounced() const;
    // Version of the stored list; empty when there is none.
    std::wstring GetLookupListVersion();

    // What a download of a new list asks the user first.
    static const wchar_t* ConfirmText();
    static constexpr const wchar_t* kTitle = L"Advanced Search";

  private:
    enum class Access { Open, Create, Write };

    bool DownloadList();
    std::wstring UnsavedList() const;
    void NoteNotUpdated();

    void Parse(std::wstring_view lookup);
    bool ReadStoredList();
    bool Store(const std::wstring& path, std::wstring_view text, Access access);
    void NoteFileError(Access access, const std::wstring& path);

    object::Quorvex& object_;
    bool hasFolder_ = false;
    std::wstring versionFile_;
    std::wstring lookupFile_;
    std::wstring updateFile_;
    std::wstring folder_;
    std::wstring unsavedHere_; // the downloaded list when there is no folder
    std::vector<Note> notes_;
    std::wstring towns_;
    std::wstring counties_;
    std::wstring postcodeAreas_;
    bool checkDone_ = false;
};

// The values of a comma-joined list, trimmed, empty ones left out.
std::vector<std::wstring> SplitList(std::wstring_view list);

} // namespace quorvex::dialogs
