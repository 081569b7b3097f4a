#include "quorvex/web_client.h"

#include "http/download_progress.h"
#include "http/wire_url.h"
#include "quorvex/console.h"
#include "support/files.h"
#include "support/text.h"

#include <curl/curl.h>

#include <cstdint>
#include <fstream>
#include <functional>
#include <string_view>
#include <system_error>

namespace quorvex::cli {
namespace {

constexpr long kMostRedirects = 10;
constexpr long kSilenceSeconds = 60; // a download fails when no byte comes for so long
constexpr long kConnectSeconds = 30;

// The URL as it may go out; empty when it is not http or https.
std::string WireText(const std::wstring& url) {
    const auto wire = http::SplitUrl(url);
    if (!wire) return {};
    return support::ToUtf8((wire->secure ? L"https://" : L"http://") + wire->host + L":" + std::to_wstring(wire->port) +
                           wire->target);
}

class CurlClient final : public WebClient {
  public:
    explicit CurlClient(support::Platform& platform) : platform_(platform), handle_(curl_easy_init()) {}
    ~CurlClient() override { curl_easy_cleanup(handle_); }

    std::wstring GetUrl(const std::wstring& url, int limitSeconds) override {
        if (url.empty()) return {};
        std::string body;
        receive_ = [&body](std::string_view piece) {
            body.append(piece);
            return true;
        };
        if (!Begin(url)) return L"TimeOut";
        curl_easy_setopt(handle_, CURLOPT_TIMEOUT, static_cast<long>(limitSeconds));
        if (curl_easy_perform(handle_) != CURLE_OK) return L"TimeOut";
        const char* type = nullptr;
        curl_easy_getinfo(handle_, CURLINFO_CONTENT_TYPE, &type);
        return support::ReplaceAll(support::DecodeReply(body, type == nullptr ? "" : type), L"&amp;", L"&");
    }

    bool GetHttpFile(const std::wstring& url, const std::wstring& targetFile, const std::wstring& caption) override {
        const std::filesystem::path part = support::ToPath(targetFile + L".part");
        std::ofstream file(part, std::ios::binary | std::ios::trunc);
        receive_ = [&file](std::string_view piece) {
            return static_cast<bool>(file.write(piece.data(), static_cast<std::streamsize>(piece.size())));
        };
        caption_ = caption;
        name_ = support::FileNameOf(targetFile);
        bool complete = file && Begin(url);
        if (complete) {
            curl_easy_setopt(handle_, CURLOPT_LOW_SPEED_LIMIT, 1L);
            curl_easy_setopt(handle_, CURLOPT_LOW_SPEED_TIME, kSilenceSeconds);
            curl_easy_setopt(handle_, CURLOPT_FAILONERROR, 1L); // an error page must not pass for a package
            complete = curl_easy_perform(handle_) == CURLE_OK;
        }
        caption_.clear();
        platform_.progress.HideProgress();
        file.close();
        std::error_code error;
        if (complete && file) std::filesystem::rename(part, support::ToPath(targetFile), error);
        if (complete && file && !error) return true;
        std::filesystem::remove(part, error);
        return false;
    }

  private:
    // What both kinds of request share; false when there is nothing to send.
    bool Begin(const std::wstring& url) {
        const std::string wire = WireText(url);
        if (handle_ == nullptr || wire.empty()) return false;
        curl_easy_reset(handle_); // keeps the connection
        curl_easy_setopt(handle_, CURLOPT_URL, wire.c_str());
        curl_easy_setopt(handle_, CURLOPT_PATH_AS_IS, 1L); // sent as given
        curl_easy_setopt(handle_, CURLOPT_FOLLOWLOCATION, 1L);
        curl_easy_setopt(handle_, CURLOPT_MAXREDIRS, kMostRedirects);
        curl_easy_setopt(handle_, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
        curl_easy_setopt(handle_, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
        curl_easy_setopt(handle_, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(handle_, CURLOPT_USERAGENT, "quorvex");
        curl_easy_setopt(handle_, CURLOPT_NOPROGRESS, 0L);
        curl_easy_setopt(handle_, CURLOPT_XFERINFODATA, this);
        curl_easy_setopt(handle_, CURLOPT_XFERINFOFUNCTION, &OnProgress);
        curl_easy_setopt(handle_, CURLOPT_WRITEDATA, this);
        curl_easy_setopt(handle_, CURLOPT_WRITEFUNCTION, &OnBody);
        return true;
    }

    static std::size_t OnBody(const char* bytes, std::size_t one, std::size_t size, void* self) {
        return static_cast<CurlClient*>(self)->receive_({bytes, one * size}) ? one * size : 0;
    }

    // Not 0: the transfer ends.
    static int OnProgress(void* self, curl_off_t total, curl_off_t done, curl_off_t, curl_off_t) {
        auto& client = *static_cast<CurlClient*>(self);
        if (!client.caption_.empty() && total > 0) {
            client.platform_.progress.ShowProgress(
                client.caption_, http::DownloadProgressText(client.name_, static_cast<std::uint64_t>(done),
                                                            static_cast<std::uint64_t>(total)));
        }
        return StopRequested() ? 1 : 0;
    }

    support::Platform& platform_;
    CURL* handle_;
    std::function<bool(std::string_view)> receive_;
    std::wstring caption_; // of a download
    std::wstring name_;
};

} // namespace

std::unique_ptr<WebClient> MakeWebClient(support::Platform& platform) {
    return std::make_unique<CurlClient>(platform);
}

} // namespace quorvex::cli
