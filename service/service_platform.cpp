#include "service/service_platform.h"

#include "support/text.h"

#include <array>
#include <chrono>
#include <ctime>
#include <iostream>
#include <thread>
#include <unistd.h>

namespace quorvex::service {

std::wstring ServicePlatform::GetUrl(const std::wstring&, int) {
    return L"TimeOut";
}

bool ServicePlatform::GetHttpFile(const std::wstring&, const std::wstring&, const std::wstring&) {
    return false;
}

int ServicePlatform::ShowMessage(const std::wstring& text, int, const std::wstring&) {
    std::cerr << support::ToUtf8(text) + "\n";
    return support::kAnswerOk;
}

int ServicePlatform::OpenWithShell(const std::wstring&, const std::wstring&) {
    return 0;
}

std::wstring ServicePlatform::ComputerName() const {
    std::array<char, 256> name{};
    if (gethostname(name.data(), name.size() - 1) != 0) return {};
    return support::FromUtf8(name.data());
}

std::wstring ServicePlatform::UserName() const {
    return L"quorvex-service";
}

support::LocalTime ServicePlatform::Now() const {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
            local.tm_min,         local.tm_sec,     local.tm_wday};
}

void ServicePlatform::SleepMilliseconds(int milliseconds) const {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

} // namespace quorvex::service
