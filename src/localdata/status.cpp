#include "localdata/status.h"

#include "database/database.h"
#include "database/row_reader.h"
#include "localdata/data_file_names.h"
#include "localdata/package_date.h"
#include "support/error.h"
#include "support/files.h"
#include "support/log.h"
#include "support/process_state.h"
#include "support/text.h"

#include <algorithm>
#include <exception>

namespace quorvex::localdata {
namespace {

constexpr wchar_t kUnknownKindDate[] = L"19000101";
constexpr wchar_t kLineEnd[] = L"\r\n";

// Runs a reader of one data file; what it throws goes to the error log and its result stays empty.
template <typename Reader>
std::wstring ReadQuietly(support::Platform& platform, const std::wstring& file, Reader&& read) {
    try {
        return read();
    } catch (...) {
        support::LogError(platform, support::CurrentError(), {}, {file});
    }
    return {};
}

DataDate ReadDate(const object::Quorvex& object, const std::wstring& dataFolder, const DataFile& dataFile) {
    const std::wstring file = DataFilePath(dataFolder, dataFile);
    // A file that another program holds exists, even though its size cannot be read.
    if (!support::PathExists(file) || support::FileSize(file) == 0) return {};
    DataDate found{{}, false};
    found.date = ReadQuietly(object.platform, file, [&]() -> std::wstring {
        database::RowReader version(object.databases, file, L"SELECT * From [version] WHERE [id]=2;");
        std::wstring date;
        if (!version.AtEnd()) date = version.Text(L"Text");
        version.Close();
        found.readable = true;
        return date;
    });
    return found;
}

std::wstring ReadLastUpdate(const object::Quorvex& object, const std::wstring& dataFolder, const DataFile& dataFile) {
    return ReadDate(object, dataFolder, dataFile).date;
}

std::wstring CountRecords(const object::Quorvex& object, const std::wstring& file, const DataFile& dataFile) {
    const std::wstring count = ReadQuietly(object.platform, file, [&] {
        database::RowReader rows(object.databases, file, std::wstring(L"SELECT * From ") + dataFile.table);
        long records = 0;
        for (; !rows.AtEnd(); rows.Next()) ++records;
        rows.Close();
        return std::to_wstring(records);
    });
    return count.empty() ? L"cannot be read" : count + L" records";
}

// The server of "\\server\share...", its first label when the name is dotted.
std::wstring ServerOf(std::wstring_view networkPath) {
    std::wstring rest(networkPath.substr(2));
    std::wstring server = support::NextField(rest, L"\\", false);
    return support::NextField(server, L".", false);
}

// The long forms of Windows paths say the same with a prefix.
std::wstring WithoutLongPrefix(const std::wstring& path) {
    constexpr std::wstring_view kLongNetwork = L"\\\\?\\UNC\\";
    constexpr std::wstring_view kLong = L"\\\\?\\";
    if (path.starts_with(kLongNetwork)) return L"\\\\" + path.substr(kLongNetwork.size());
    return path.starts_with(kLong) ? path.substr(kLong.size()) : path;
}

bool IsNetworkPath(std::wstring_view path) {
    return path.starts_with(L"\\\\");
}

} // namespace

const std::wstring* LastUpdateDates::Of(wchar_t kind) const {
    switch (kind) {
    case L'F':
        return &full;
    case L'T':
        return &street;
    case L'Z':
        return &postZon;
    default:
        return nullptr;
    }
}

bool AreDataFilesInPlace(const std::wstring& dataFolder) {
    return std::any_of(kDataFiles.begin(), kDataFiles.end(), [&dataFolder](const DataFile& file) {
        return support::FileExists(DataFilePath(dataFolder, file));
    });
}

std::wstring GetLastUpdateFULL(const object::Quorvex& object, const std::wstring& dataFolder) {
    return ReadLastUpdate(object, dataFolder, *FindDataFile(L'F'));
}

std::wstring GetLastUpdateStreet(const object::Quorvex& object, const std::wstring& dataFolder) {
    return ReadLastUpdate(object, dataFolder, *FindDataFile(L'T'));
}

std::wstring GetLastUpdatePostZon(const object::Quorvex& object, const std::wstring& dataFolder) {
    return ReadLastUpdate(object, dataFolder, *FindDataFile(L'Z'));
}

LastUpdateDates GetLastUpdateDates(const object::Quorvex& object, const std::wstring& dataFolder) {
    return {GetLastUpdateFULL(object, dataFolder), GetLastUpdateStreet(object, dataFolder),
            GetLastUpdatePostZon(object, dataFolder)};
}

DataDate ReadDataDate(const object::Quorvex& object, const std::wstring& dataFolder, wchar_t kind) {
    const DataFile* const file = FindDataFile(kind);
    return file == nullptr ? DataDate() : ReadDate(object, dataFolder, *file);
}

void ShowDataPathMissing(support::Platform& platform) {
    platform.user.ShowMessage(L"Data path must be set first", support::kStyleCritical, support::Process().messageTitle);
}

std::wstring LMGetLastUpdateDate(object::Quorvex& object, const std::wstring& kind) {
    if (!object.LocalMode()) {
        ShowDataPathMissing(object.platform);
        return {};
    }
    const std::wstring letter = support::UpperCase(kind);
    const DataFile* file = letter.size() == 1 ? FindDataFile(letter.front()) : nullptr;
    return file == nullptr ? kUnknownKindDate : ReadLastUpdate(object, object.DataPath(), *file);
}

std::wstring GetDataStorageComputerName(support::Platform& platform, const std::wstring& dataFolder) {
    support::Process().currentOperation = L"IsRegistered:GetDriveName 1";
    const std::wstring folder = WithoutLongPrefix(dataFolder);
    std::wstring server;
    if (IsNetworkPath(folder)) {
        server = ServerOf(folder);
    } else {
        const bool hasDrive = folder.size() >= 2 && folder[1] == L':';
        const std::wstring share = hasDrive ? platform.machine.DriveShareName(folder.front()) : std::wstring();
        server = IsNetworkPath(share) ? ServerOf(share) : platform.machine.ComputerName();
    }
    return support::UpperCase(server);
}

std::wstring GetSummary(const object::Quorvex& object, const std::wstring& dataFolder, LastUpdateDates& dates) {
    dates = GetLastUpdateDates(object, dataFolder);
    std::wstring summary;
    for (const DataFile& file : kDataFiles) {
        if (!support::FileExists(DataFilePath(dataFolder, file))) continue;
        summary += std::wstring(L"  ") + file.summaryHeading + kLineEnd;
        summary += L"  Last updated:" + DisplayDate(*dates.Of(file.kind)) + kLineEnd;
    }
    const std::wstring version = object.platform.machine.DataAccessVersion();
    summary += L"  Data is on Machine:" + GetDataStorageComputerName(object.platform, dataFolder) + kLineEnd;
    summary += L"  MDAC Version:" + (version.empty() ? L"Not LOADED" : version);
    return summary;
}

std::wstring GetDetailedSummary(const object::Quorvex& object, const std::wstring& dataFolder) {
    const auto line = [](const std::wstring& text) { return L"  " + text + kLineEnd; };
    std::wstring summary = std::wstring(L"System:") + kLineEnd;
    summary += line(L"Component version:" + object::GetVersion());
    summary += line(L"Bitness:" + std::to_wstring(sizeof(void*) * 8) + L"-bit");
    summary += line(L"Windows version:" + object.platform.machine.SystemVersion());
    summary += line(L"Computer:" + object.platform.machine.ComputerName());
    summary += line(L"User:" + object.platform.machine.UserName());
    summary += line(L"Database engine:" +
                    ReadQuietly(object.platform, dataFolder, [&object] { return object.databases.Name(); }));
    LastUpdateDates dates;
    summary += std::wstring(L"Data Status:") + kLineEnd + GetSummary(object, dataFolder, dates);
    for (const DataFile& dataFile : kDataFiles) {
        const std::wstring file = DataFilePath(dataFolder, dataFile);
        const std::int32_t size = support::FileSize(file);
        if (size <= 0) continue;
        summary += std::wstring(kLineEnd) + L"  " + dataFile.fileName + L":" + std::to_wstring(size) + L" bytes, " +
                   CountRecords(object, file, dataFile);
    }
    return summary;
}

} // namespace quorvex::localdata
