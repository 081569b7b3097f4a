#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>

namespace quorvex::service {

// Keeps a data folder as new as another service's: asks it for packages now and then, puts them into the folder
// "updates", and applies them to the data files in place.
class Follower {
  public:
    Follower(std::filesystem::path folder, std::string address, std::chrono::milliseconds every);
    ~Follower();
    Follower(const Follower&) = delete;
    Follower& operator=(const Follower&) = delete;

    void Start();
    // One look; returns the number of packages applied. Throws support::Error.
    int Follow();

  private:
    void Run();

    std::filesystem::path folder_;
    std::string address_;
    std::chrono::milliseconds every_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool stopped_ = false;
    std::thread thread_;
};

} // namespace quorvex::service
