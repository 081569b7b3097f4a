#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

namespace quorvex::service {

// What is told of one request. Never the key and never the address that was found.
struct AccessEntry {
    std::string client;
    std::string account; // the key's short name
    std::string method;
    std::string page;   // one of the service's pages, or "other"
    std::string result; // see ResultOf in pages.h
    std::string agent;
    std::string request; // the identifier under which it was charged
    int status = 0;
    std::size_t bytes = 0;
    int credits = 0;
    std::chrono::microseconds time{0};
};

// One line for each request, as JSON or in the combined format of web servers. Lines are written out once a second.
class AccessLog {
  public:
    enum class Format { Json, Combined };
    // file: empty for no log, "-" for the standard output. Throws support::Error if it cannot be written.
    AccessLog(std::string file, Format format);
    ~AccessLog();
    AccessLog(const AccessLog&) = delete;
    AccessLog& operator=(const AccessLog&) = delete;

    void Write(const AccessEntry& entry);
    void Flush();
    // Opens the file again by its name, after somebody moved it. Throws support::Error and goes on with the old one.
    void Reopen();
    // Lines lost, for a full disk.
    std::uint64_t Lost() const;

    static std::string Line(const AccessEntry& entry, Format format, std::chrono::system_clock::time_point now);

  private:
    std::string name_;
    Format format_;
    mutable std::mutex mutex_;
    std::FILE* file_ = nullptr;
    std::uint64_t lost_ = 0;
    std::uint64_t unflushed_ = 0;
};

} // namespace quorvex::service
