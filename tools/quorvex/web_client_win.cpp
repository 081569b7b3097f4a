#include "quorvex/web_client.h"

#include "http/transport_win.h"

namespace quorvex::cli {
namespace {

class TransportClient final : public WebClient {
  public:
    explicit TransportClient(support::Platform& platform) : transport_(platform) {}

    std::wstring GetUrl(const std::wstring& url, int limitSeconds) override {
        return transport_.GetURL(url, limitSeconds);
    }
    bool GetHttpFile(const std::wstring& url, const std::wstring& targetFile, const std::wstring& caption) override {
        return transport_.GetHTTPFile(url, targetFile, caption);
    }

  private:
    http::Transport transport_;
};

} // namespace

std::unique_ptr<WebClient> MakeWebClient(support::Platform& platform) {
    return std::make_unique<TransportClient>(platform);
}

} // namespace quorvex::cli
