// Pages that the object opens for the user arrive in the browser as they were built.
#include "com/browser_capture.h"
#include "com/host.h"

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
    ASSERT_EQ(object_->OpenAnAccountAndLinkToResellerForInternalUse(), S_OK);
    ASSERT_EQ(browser.Opened(1), std::vector<std::string>{"\"" + account + "I&id=4711\""});
    ASSERT_EQ(object_->OpenAnAccountAndLinkToResellerForWebUse(), S_OK);
    ASSERT_EQ(browser.Opened(2).back(), "\"" + account + "W&id=4711\"");
    ASSERT_EQ(object_->OpenAnAccountAndLinkToResellerForWebAndInternalUse(), S_OK);
    ASSERT_EQ(browser.Opened(3).back(), "\"" + account + "&id=4711\"");
    ASSERT_EQ(object_->ShowAccountAdminPage(), S_OK);
    ASSERT_EQ(browser.Opened(4).back(), "\"https://accounts.quorvex.example/WebAccountLogin.aspx\"");
    ASSERT_EQ(object_->put_General_accountadminpage(Text(L"http://127.0.0.1:1/my account")), S_OK);
    ASSERT_EQ(object_->ShowAccountAdminPage(), S_OK);
    ASSERT_EQ(browser.Opened(5).back(), "\"http://127.0.0.1:1/my account\"");
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
