#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvex::service::http {

using Headers = std::vector<std::pair<std::string, std::string>>;

struct Request {
    std::string method;
    std::string target; // path and query as sent
    std::string client; // the address of the peer
    bool secure = false;
    Headers headers;

    // The first field of that name, ignoring case; empty if there is none.
    std::string_view Header(std::string_view name) const;
};

// A file open for reading, closed with its last owner.
class OpenFile {
  public:
    // Null if the path is not a readable regular file.
    static std::shared_ptr<const OpenFile> Open(const std::string& path);
    explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
    ~OpenFile();
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    std::uint64_t Size() const;
    // Bytes from offset on, at most count; fewer at the end of the file or on an error.
    std::string Read(std::uint64_t offset, std::size_t count) const;

  private:
    int descriptor_;
};

struct FilePart {
    std::shared_ptr<const OpenFile> file;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};

// How an answer breaks the rules, for the tests of clients.
struct Distortion {
    std::optional<std::uint64_t> promisedLength; // in Content-Length; none: no such field
    bool byteByByte = false;
    std::chrono::milliseconds pause{0}; // between two bytes
    std::function<bool()> goOn;         // false ends the connection
};

struct Response {
    int status = 200;
    std::string contentType;
    std::string body;
    std::optional<FilePart> file; // replaces the body
    Headers headers;
    std::optional<Distortion> distortion;
};

// Sends the answer; may be called on any thread, once.
using Respond = std::function<void(Response)>;

// The standard phrase of a status code.
std::string_view Phrase(int status);

} // namespace quorvex::service::http
