#include "service/http/message.h"

#include "support/characters.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvex::service::http {
std::string_view Request::Header(std::string_view name) const {
    for (const auto& [field, value] : headers) {
        if (support::EqualButCase(field, name)) return value;
    }
    return {};
}

std::shared_ptr<const OpenFile> OpenFile::Open(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return nullptr;
    auto file = std::make_shared<const OpenFile>(descriptor);
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) ? file : nullptr;
}

OpenFile::~OpenFile() {
    close(descriptor_);
}

std::uint64_t OpenFile::Size() const {
    struct stat status {};
    return fstat(descriptor_, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::string OpenFile::Read(std::uint64_t offset, std::size_t count) const {
    std::string bytes(count, '\0');
    const ssize_t got = pread(descriptor_, bytes.data(), count, static_cast<off_t>(offset));
    bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return bytes;
}

std::string_view Phrase(int status) {
    static constexpr std::array<std::pair<int, std::string_view>, 19> kPhrases = {{
        {200, "OK"},
        {206, "Partial Content"},
        {304, "Not Modified"},
        {400, "Bad Request"},
        {401, "Unauthorized"},
        {403, "Forbidden"},
        {404, "Not Found"},
        {405, "Method Not Allowed"},
        {408, "Request Timeout"},
        {413, "Content Too Large"},
        {414, "URI Too Long"},
        {416, "Range Not Satisfiable"},
        {417, "Expectation Failed"},
        {429, "Too Many Requests"},
        {431, "Request Header Fields Too Large"},
        {500, "Internal Server Error"},
        {501, "Not Implemented"},
        {503, "Service Unavailable"},
        {505, "HTTP Version Not Supported"},
    }};
    const auto found =
        std::find_if(kPhrases.begin(), kPhrases.end(), [status](const auto& entry) { return entry.first == status; });
    return found == kPhrases.end() ? std::string_view("Status") : found->second;
}

} // namespace quorvex::service::http
