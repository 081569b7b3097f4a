#include "dialogs/selection_view.h"

#include <gtest/gtest.h>

namespace quorvex::dialogs {
namespace {

TEST(SelectionView, EnterGoesWhereTheViewSendsIt) {
    EXPECT_EQ(RouteEnter(View::Postcode, false, false, false), EnterAction::Find);
    EXPECT_EQ(RouteEnter(View::Postcode, false, true, false), EnterAction::None);
    EXPECT_EQ(RouteEnter(View::Postcode, true, true, false), EnterAction::Select);
    EXPECT_EQ(RouteEnter(View::Criteria, true, false, true), EnterAction::AdvancedFind);
    EXPECT_EQ(RouteEnter(View::Criteria, true, false, false), EnterAction::None);
    EXPECT_EQ(RouteEnter(View::Results, true, false, true), EnterAction::None);
}

TEST(SelectionView, EscapeUnloadsLeavesOrDoesNothing) {
    EXPECT_EQ(RouteEscape(View::Postcode), EscapeAction::Unload);
    EXPECT_EQ(RouteEscape(View::Criteria), EscapeAction::LeaveAdvanced);
    EXPECT_EQ(RouteEscape(View::Results), EscapeAction::None);
}

TEST(SelectionView, TextsOfAccountAndFailure) {
    EXPECT_EQ(CaptionToRestore(L"Host", L"12 left", true), L"12 left");
    EXPECT_EQ(CaptionToRestore(L"Host", L"12 left", false), L"Host");
    EXPECT_EQ(CaptionToRestore(L"Host", L"", true), L"Host");
    EXPECT_EQ(FailureText(L"12 left", L"Bad key"), L"12 left\r\nBad key");
    EXPECT_EQ(FailureText(L"", L"Bad key"), L"\r\nBad key");
    EXPECT_FALSE(FailureText(L"", L"").empty()); // never an empty box
}

} // namespace
} // namespace quorvex::dialogs
