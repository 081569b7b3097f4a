#pragma once

#include "service/service.h"
#include "testing/temp_folder.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <memory>
#include <string>

namespace quorvex::service {

// A service on the sample folder (or another) at a free port of this machine, asked over real HTTP.
class ServiceTest : public ::testing::Test {
  protected:
    ServiceTest();

    Options options; // a test changes them before Begin
    void Begin(bool waitForLists = true);
    Service& Running() { return *service_; }

    // What HTTP forbids in a target is escaped; a failed request fails the test and gives an empty reply.
    httplib::Result Request(const std::string& target);
    std::string Body(const std::string& target);
    std::wstring Text(const std::string& target);
    // The reply as a lookup object sees it: fetched by its whole address, "&amp;" made "&".
    std::wstring AsHost(const std::wstring& url);
    // The element of a page below "/xmlservice/".
    std::wstring ElementOf(const std::string& page, const std::wstring& element);

  private:
    quorvex::testing::TempFolder folder_;
    std::unique_ptr<Service> service_;
};

} // namespace quorvex::service
