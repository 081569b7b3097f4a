#include "service/service_platform.h"

#include "support/text.h"

#include <iostream>

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

} // namespace quorvex::service
