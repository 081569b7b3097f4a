#pragma once

#include "object/quorvex.h"

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::cli {

// The fields of a record in the order in which lists are completed.
inline constexpr std::array<const char*, 14> kRecordColumns = {
    "id",      "organisation",        "line1",      "line2",    "line3",    "town",  "county", "postcode",
    "country", "deliverypointsuffix", "households", "smallorg", "mailsort", "spare",
};
using RecordCells = std::array<std::wstring, kRecordColumns.size()>;

// All that is known at one postcode. Not copied, since it refers to itself.
struct PostcodeAddresses {
    PostcodeAddresses() = default;
    PostcodeAddresses(const PostcodeAddresses&) = delete;
    PostcodeAddresses& operator=(const PostcodeAddresses&) = delete;
    ~PostcodeAddresses() = default;

    std::list<std::wstring> texts;           // what the views are parts of
    std::vector<std::wstring_view> premises; // as MatchHouse takes them
    std::vector<std::wstring_view> sources;  // what Record makes a premise's record from
    std::wstring_view common;                // what the source's premises share
    std::wstring streetWords;
    std::wstring postcode; // as written
};

// Where a list's addresses come from. One object for each thread.
class AddressSource {
  public:
    AddressSource() = default;
    AddressSource(const AddressSource&) = delete;
    AddressSource& operator=(const AddressSource&) = delete;
    virtual ~AddressSource() = default;

    // Between these two the data does not change; what was found keeps. Begin throws support::Error if the data cannot
    // be read.
    virtual void BeginBatch() {}
    virtual void EndBatch() {}
    // The addresses at a postcode key, nullptr if there are none. Valid until EndBatch. Throws support::Error.
    virtual const PostcodeAddresses* Find(const std::wstring& key) = 0;
    // The record of a premise; or what all premises share, for a position beyond the last. Throws support::Error.
    virtual RecordCells Record(const PostcodeAddresses& addresses, std::size_t premise) = 0;
};

using AddressSourceFactory = std::function<std::unique_ptr<AddressSource>()>;

// Lets go of the data file for a moment every now and then, in all threads at once: an update that waits for the file
// gets its turn. Shared by the sources of a run.
class ReadTurns {
  public:
    // Between these two the file may be open.
    void Begin();
    void End() { open_.unlock_shared(); }

  private:
    std::shared_mutex open_;
    std::atomic<std::chrono::steady_clock::duration::rep> lastPause_{
        std::chrono::steady_clock::now().time_since_epoch().count()};
};

// Reads the data file itself. A batch waits for an update that has begun up to a minute. The turns must outlive the
// source.
std::unique_ptr<AddressSource> MakeLocalSource(const std::wstring& dataFolder, ReadTurns& turns);
// Asks the service, each postcode of a batch once. The object must outlive the source.
std::unique_ptr<AddressSource> MakeWebSource(object::Quorvex& object);

} // namespace quorvex::cli
