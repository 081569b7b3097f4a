// Pages that the object opens for the user arrive in the browser as they were built.
#include "com/browser_capture.h"
#include "com/host.h"

#include <gmock/gmock.h>

namespace quorvex::testing {
namespace {

using PagesTest = ComTest;

TEST_F(PagesTest, AccountPagesCarryTheReseller) {
    const BrowserCapture browser;
    const WindowCloser closer;
    long reseller = 4711;
    ASSERT_EQ(object_->SetResellerID(&reseller), S_OK);
    const std::string account =
        "http://accounts.quorvex.example/A2CustomerAccount/WebAccountCreateFromReseller.aspx?r=";
    object_->OpenAnAccountAndLinkToResellerForInternalUse();
    browser.Opened(1);
    object_->OpenAnAccountAndLinkToResellerForWebUse();
    browser.Opened(2);
    object_->OpenAnAccountAndLinkToResellerForWebAndInternalUse();
    browser.Opened(3);
    object_->ShowAccountAdminPage();
    browser.Opened(4);
    object_->put_General_accountadminpage(Text(L"http://127.0.0.1:1/my account"));
    object_->ShowAccountAdminPage();
    EXPECT_THAT(browser.Opened(5), ::testing::ElementsAre("\"" + account + "I&id=4711\"",
                                                          "\"" + account + "W&id=4711\"", "\"" + account + "&id=4711\"",
                                                          "\"https://accounts.quorvex.example/WebAccountLogin.aspx\"",
                                                          "\"http://127.0.0.1:1/my account\""));
    EXPECT_EQ(closer.Closed(), 0);
}

TEST_F(PagesTest, WhatCannotBeOpenedIsSaidAndTheValueIsEmpty) {
    const BrowserCapture browser;
    const WindowCloser closer;
    Value result(1L);
    ASSERT_EQ(object_->DisplayWebPage(Text(L"C:\\no such folder\\page.htm").Ref(), &result), S_OK);
    EXPECT_EQ(result.vt, VT_EMPTY);
    EXPECT_GT(closer.Closed(), 0);
    // A map that the service does not tell is opened as an empty address, which fails in the same way.
    const int before = closer.Closed();
    Text address(L"old");
    ASSERT_EQ(object_->DisplayPrefuredMapStreet(Text(L"AB1 0DF").Ref(), address.Out()), S_OK);
    EXPECT_EQ(address.Str(), L"");
    EXPECT_GT(closer.Closed(), before);
    // Without a postcode nothing is asked and nothing opened.
    const int afterwards = closer.Closed();
    ASSERT_EQ(object_->DisplayPrefuredMapStreet(Text(L"").Ref(), address.Out()), S_OK);
    EXPECT_EQ(closer.Closed(), afterwards);
    EXPECT_TRUE(browser.Opened(0).empty());
}

} // namespace
} // namespace quorvex::testing
