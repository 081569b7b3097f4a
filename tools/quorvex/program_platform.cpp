#include "quorvex/program_platform.h"

#include "support/text.h"

namespace quorvex::cli {

WebClient& ProgramPlatform::Web() {
    if (!web_) web_ = MakeWebClient(platform_);
    return *web_;
}

std::wstring ProgramPlatform::GetUrl(const std::wstring& url, int limitSeconds) {
    return Web().GetUrl(url, limitSeconds);
}

bool ProgramPlatform::GetHttpFile(const std::wstring& url, const std::wstring& targetFile,
                                  const std::wstring& progressCaption) {
    return Web().GetHttpFile(url, targetFile, progressCaption);
}

int ProgramPlatform::ShowMessage(const std::wstring& text, int, const std::wstring&) {
    messages.emplace_back(support::Trim(support::CleanLogText(support::ReplaceAll(text, L"\r\n", L" "))));
    return support::kAnswerOk;
}

void ProgramPlatform::ShowProgress(const std::wstring& caption, const std::wstring& text) {
    if (!progress_) progress_.emplace(console_);
    progress_->Show(support::ToUtf8(caption + (text.empty() ? L"" : L"  ") + text));
}

} // namespace quorvex::cli
