#pragma once

#include "service/address_index.h"
#include "service/local_data.h"

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quorvex::service {

// What one request works with from its beginning to its end.
struct DataSet {
    std::shared_ptr<const LocalData> data;
    std::shared_ptr<const AddressIndex> index; // null while the first one is being made
};

// The data of a folder, and its lists and search words made again whenever it changes. Any number of threads.
class DataSource {
  public:
    // Throws support::Error if the folder holds no data file.
    explicit DataSource(std::filesystem::path folder);
    ~DataSource();
    DataSource(const DataSource&) = delete;
    DataSource& operator=(const DataSource&) = delete;

    std::shared_ptr<const DataSet> Current() const;

    // Makes the lists on a thread of its own, now and after every change of the files.
    void Start();
    // Reads everything again, whether it looks changed or not.
    void Reload();
    void Stop();
    // Waits for the first lists; false if they took longer.
    bool WaitForLists(std::chrono::milliseconds longest) const;

    struct Status {
        bool ready = false;                // lists and search words are there
        bool found = true;                 // the folder holds its data files
        std::string problem;               // why the latest reading failed; empty if it did not
        std::string full, street, postZon; // dates of the last packages, eight digits; empty if never updated
        std::uint64_t readings = 0;
    };
    Status State() const;

  private:
    using Stamp = std::vector<std::string>;
    Stamp StampOfFiles() const;
    void Run();
    // False if the data could not be read; what was read before stays.
    bool Read();
    // Waits for a time or until there is something to do at once; true when it ends.
    bool Pause();

    std::filesystem::path folder_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::shared_ptr<const DataSet> current_;
    Status status_;
    bool reload_ = false;
    bool stopped_ = false;
    std::thread thread_;
};

} // namespace quorvex::service
