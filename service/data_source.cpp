#include "service/data_source.h"

#include "localdata/data_file_names.h"
#include "localdata/status.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <sys/stat.h>

#include <algorithm>
#include <iostream>
#include <utility>

namespace quorvex::service {
namespace {

constexpr std::chrono::milliseconds kLook(1000);
constexpr std::chrono::milliseconds kRarest(60000); // between attempts at a file that cannot be read

// Where the folder leads now: whoever replaces it by another one switches a link.
std::filesystem::path Resolved(const std::filesystem::path& folder) {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::canonical(folder, error);
    return error ? folder : path;
}

} // namespace

DataSource::DataSource(std::filesystem::path folder) : folder_(std::move(folder)) {
    current_ = std::make_shared<const DataSet>(DataSet{std::make_shared<const LocalData>(Resolved(folder_)), nullptr});
}

DataSource::~DataSource() {
    Stop();
}

std::shared_ptr<const DataSet> DataSource::Current() const {
    const std::lock_guard lock(mutex_);
    return current_;
}

void DataSource::Start() {
    thread_ = std::thread([this] { Run(); });
}

void DataSource::Reload() {
    const std::lock_guard lock(mutex_);
    reload_ = true;
    changed_.notify_all();
}

void DataSource::Stop() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable()) thread_.join();
}

bool DataSource::WaitForLists(std::chrono::milliseconds longest) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, longest, [this] { return status_.ready; });
}

DataSource::Status DataSource::State() const {
    const std::lock_guard lock(mutex_);
    return status_;
}

DataSource::Stamp DataSource::StampOfFiles() const {
    Stamp stamp;
    const std::filesystem::path folder = Resolved(folder_);
    std::vector<std::filesystem::path> files = {folder / support::ToUtf8(localdata::kSubstitutionFile)};
    for (const localdata::DataFile& file : localdata::kDataFiles)
        files.push_back(support::ToPath(localdata::DataFilePath(support::FromPath(folder), file)));
    for (const std::filesystem::path& file : files) {
        struct stat status {};
        if (stat(file.c_str(), &status) != 0) continue;
        stamp.push_back(file.string() + " " + std::to_string(status.st_ino) + " " + std::to_string(status.st_size) +
                        " " + std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec));
    }
    return stamp;
}

bool DataSource::Pause() {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kLook, [this] { return stopped_ || reload_; });
    return stopped_;
}

void DataSource::Run() {
    Stamp read; // of the files when they were read last
    Stamp seen;
    bool failed = true;
    std::chrono::milliseconds pause = kLook;
    auto retry = std::chrono::steady_clock::now();
    do {
        Stamp now = StampOfFiles();
        bool asked = false;
        {
            const std::lock_guard lock(mutex_);
            asked = std::exchange(reload_, false);
            status_.found = !now.empty();
        }
        // Files that change from one look to the next are still being written.
        const bool settled = std::exchange(seen, now) == now;
        // A file may be in use for longer than the engine waits for it.
        const bool again = failed && std::chrono::steady_clock::now() >= retry;
        if (again || asked || (settled && now != read)) {
            failed = !Read();
            read = std::move(now);
            pause = failed ? std::min(2 * pause, kRarest) : kLook;
            retry = std::chrono::steady_clock::now() + pause;
        }
    } while (!Pause());
}

bool DataSource::Read() {
    std::string problem;
    try {
        auto data = std::make_shared<const LocalData>(Resolved(folder_));
        auto index = std::make_shared<const AddressIndex>(*data);
        const localdata::LastUpdateDates dates = data->Dates();
        auto fresh = std::make_shared<const DataSet>(DataSet{std::move(data), std::move(index)});
        const std::lock_guard lock(mutex_);
        current_ = std::move(fresh);
        status_.ready = true;
        status_.full = support::ToUtf8(dates.full);
        status_.street = support::ToUtf8(dates.street);
        status_.postZon = support::ToUtf8(dates.postZon);
        ++status_.readings;
    } catch (const support::Error& error) {
        problem = support::ToUtf8(error.Description());
    }
    const std::lock_guard lock(mutex_);
    if (!problem.empty() && problem != status_.problem)
        std::cerr << "quorvex-service: the data cannot be read: " + problem + "\n";
    status_.problem = problem;
    changed_.notify_all();
    return problem.empty();
}

} // namespace quorvex::service
