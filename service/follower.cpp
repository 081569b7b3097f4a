#include "service/follower.h"

#include "localdata/status.h"
#include "object/quorvex.h"
#include "service/service_platform.h"
#include "support/error.h"
#include "support/text.h"
#include "update/update_list.h"
#include "update/update_procedure.h"

#include <httplib.h>

#include <fstream>
#include <iostream>

namespace quorvex::service {
namespace {

constexpr int kDownloadSeconds = 60; // without a byte

struct WebAddress {
    std::string server; // "http://host:port"
    std::string target;
};

WebAddress Split(const std::wstring& url) {
    const std::string text = support::ToUtf8(url);
    const std::size_t host = text.find("://");
    const std::size_t slash = host == std::string::npos ? host : text.find('/', host + 3);
    return {text.substr(0, slash), slash == std::string::npos ? "/" : text.substr(slash)};
}

httplib::Client ClientOf(const WebAddress& address, int seconds) {
    httplib::Client client(address.server);
    client.set_url_encode(false);
    client.set_connection_timeout(10);
    client.set_read_timeout(seconds);
    return client;
}

// The update procedure with nobody before it: always downloads, and says only what went wrong.
class FollowPlatform final : public ServicePlatform, private update::UpdateWindows, private mail::Mailer {
  public:
    explicit FollowPlatform(std::filesystem::path published) : published_(std::move(published)) {}

    update::Surroundings UpdateSurroundings() { return {*this, *this}; }

  private:
    std::wstring GetUrl(const std::wstring& url, int limitSeconds) override {
        const WebAddress address = Split(url);
        const httplib::Result reply = ClientOf(address, limitSeconds).Get(address.target);
        if (!reply || reply->status != 200) return L"TimeOut";
        return support::ReplaceAll(support::FromUtf8(reply->body), L"&amp;", L"&");
    }

    bool GetHttpFile(const std::wstring& url, const std::wstring& targetFile, const std::wstring&) override {
        const std::filesystem::path target = support::ToUtf8(support::ReplaceAll(targetFile, L"\\", L"/"));
        const std::filesystem::path part = target.string() + ".part";
        std::error_code error;
        if (!Download(Split(url), part)) {
            std::filesystem::remove(part, error);
            return false;
        }
        // Those who follow this service get the package from it.
        std::filesystem::create_directories(published_, error);
        std::filesystem::copy_file(part, published_ / target.filename(),
                                   std::filesystem::copy_options::overwrite_existing, error);
        std::filesystem::rename(part, target, error);
        return !error;
    }

    update::UpdateChoice AskUpdateChoice(const std::wstring&, const std::wstring&, bool) override {
        return update::UpdateChoice::Download;
    }
    void ShowZipStatus(const std::wstring&, const std::wstring&, const std::wstring&) override {}
    void HideZipStatus() override {}
    mail::MailResult SendMail(const mail::MailMessage&) override { return {}; }

    int ShowMessage(const std::wstring& text, int style, const std::wstring& title) override {
        if ((style & support::kStyleCritical) == 0) return support::kAnswerOk;
        return ServicePlatform::ShowMessage(L"quorvex-service: following: " + text, style, title);
    }

    static bool Download(const WebAddress& address, const std::filesystem::path& file) {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        const httplib::Result reply =
            ClientOf(address, kDownloadSeconds).Get(address.target, [&out](const char* bytes, std::size_t count) {
                return static_cast<bool>(out.write(bytes, static_cast<std::streamsize>(count)));
            });
        out.close();
        return reply && reply->status == 200 && out;
    }

    std::filesystem::path published_;
};

} // namespace

Follower::Follower(std::filesystem::path folder, std::string address, std::chrono::milliseconds every)
    : folder_(std::move(folder)), address_(std::move(address)), every_(every) {}

Follower::~Follower() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable()) thread_.join();
}

void Follower::Start() {
    thread_ = std::thread([this] { Run(); });
}

int Follower::Follow() {
    FollowPlatform platform(folder_ / "updates");
    object::Quorvex object(platform.Surroundings(), platform.Databases());
    object.LMSetDataPath(support::FromUtf8(folder_.string()));
    object.ServerURL = support::FromUtf8(address_);
    update::UpdateRequest request;
    request.dataFolder = object.DataPath();
    request.internetIsAvailable = true;
    int applied = 0;
    update::Update(object, platform.UpdateSurroundings(), request, applied);
    return applied;
}

void Follower::Run() {
    for (;;) {
        const int applied = Follow();
        if (applied > 0) std::cerr << "quorvex-service: " + std::to_string(applied) + " update packages applied\n";
        std::unique_lock lock(mutex_);
        if (changed_.wait_for(lock, every_, [this] { return stopped_; })) return;
    }
}

} // namespace quorvex::service
