#pragma once

#include "database/jet/jet_provider.h"
#include "support/machine_posix.h"
#include "support/platform.h"

namespace quorvex::service {

// What the component's lookups find around them inside the service: its data files and the clock. There is no user to
// ask and nothing to fetch; messages go to the standard error.
class ServicePlatform : protected support::WebAccess,
                        protected support::UserPrompts,
                        protected support::ProgressDisplay {
  public:
    // keeper: as the provider of the embedded engine takes it.
    explicit ServicePlatform(database::DatabaseKeeper* keeper = nullptr) : databases_({}, keeper) {}
    ServicePlatform(const ServicePlatform&) = delete;
    ServicePlatform& operator=(const ServicePlatform&) = delete;

    support::Platform& Surroundings() { return platform_; }
    database::DatabaseProvider& Databases() { return databases_; }

  protected:
    bool RequestRunning() const override { return false; }
    std::wstring GetUrl(const std::wstring& url, int limitSeconds) override;
    bool GetHttpFile(const std::wstring& url, const std::wstring& targetFile,
                     const std::wstring& progressCaption) override;
    void StopRequest() override {}

    int ShowMessage(const std::wstring& text, int style, const std::wstring& title) override;
    void SetClipboardText(const std::wstring&) override {}
    int OpenWithShell(const std::wstring& file, const std::wstring& workingDirectory) override;
    void ShowProgress(const std::wstring&, const std::wstring&) override {}
    void HideProgress() override {}
    void PumpMessages() override {}

    support::PosixMachine machine_;
    support::Platform platform_{*this, *this, *this, machine_, {}};
    database::JetProvider databases_; // without a keeper any number of threads may open files through it
};

} // namespace quorvex::service
