#include "service/file_answer.h"

#include <charconv>
#include <optional>
#include <sys/stat.h>

namespace quorvex::service {
namespace {

struct Range {
    std::uint64_t first = 0;
    std::uint64_t length = 0; // 0: cannot be met
};

std::optional<std::uint64_t> NumberOf(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

// "bytes=first-last", "bytes=first-" or "bytes=-count". Nothing for anything else, which means the whole file.
std::optional<Range> RangeOf(std::string_view text, std::uint64_t size) {
    if (!text.starts_with("bytes=")) return std::nullopt;
    text.remove_prefix(6);
    const std::size_t dash = text.find('-');
    if (dash == std::string_view::npos) return std::nullopt;
    const auto first = NumberOf(text.substr(0, dash));
    const auto last = NumberOf(text.substr(dash + 1));
    if (dash == 0) {
        if (!last) return std::nullopt;
        const std::uint64_t count = std::min(*last, size);
        return Range{size - count, count};
    }
    if (!first || (!last && dash + 1 != text.size()) || (last && *last < *first)) return std::nullopt;
    if (*first >= size) return Range{};
    return Range{*first, std::min(last.value_or(size - 1), size - 1) - *first + 1};
}

std::string TagOf(const std::filesystem::path& path, std::uint64_t size) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return {};
    return "\"" + std::to_string(size) + "-" + std::to_string(status.st_mtim.tv_sec) + "-" +
           std::to_string(status.st_mtim.tv_nsec) + "\"";
}

} // namespace

http::Response FileAnswer(const http::Request& request, const std::filesystem::path& path, const std::string& type) {
    http::Response response;
    const auto file = http::OpenFile::Open(path.string());
    if (!file) {
        response.status = 404;
        return response;
    }
    const std::uint64_t size = file->Size();
    const std::string tag = TagOf(path, size);
    response.contentType = type;
    response.headers = {{"Accept-Ranges", "bytes"}, {"Cache-Control", "no-cache"}, {"ETag", tag}};
    const std::string_view known = request.Header("If-None-Match");
    if (!known.empty() && (known == "*" || known.find(tag) != std::string_view::npos)) {
        response.status = 304;
        return response;
    }
    const std::string_view unchanged = request.Header("If-Range");
    const auto range = unchanged.empty() || unchanged == tag ? RangeOf(request.Header("Range"), size) : std::nullopt;
    if (!range) {
        response.file = http::FilePart{file, 0, size};
        return response;
    }
    if (range->length == 0) {
        response.status = 416;
        response.headers.emplace_back("Content-Range", "bytes */" + std::to_string(size));
        return response;
    }
    response.status = 206;
    response.headers.emplace_back("Content-Range", "bytes " + std::to_string(range->first) + "-" +
                                                       std::to_string(range->first + range->length - 1) + "/" +
                                                       std::to_string(size));
    response.file = http::FilePart{file, range->first, range->length};
    return response;
}

} // namespace quorvex::service
