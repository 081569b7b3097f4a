#include "mail/mail.h"

#include "mail/mail_programs_win.h"
#include "mail/recording_object_win.h"
#include "support_code/temp_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvex::testing {
namespace {

using support::MailStatus;
using ::testing::ElementsAre;

constexpr wchar_t kOutlookClass[] = L"{6F1D6A7C-2B0E-4F6D-9A8B-51A6C43D0E11}";
constexpr wchar_t kNotesClass[] = L"{6F1D6A7C-2B0E-4F6D-9A8B-51A6C43D0E12}";

class Mail : public ::testing::Test {
  protected:
    Mail() {
        EXPECT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
        support::WriteFileBytes(folder_.File(L"Error1.log"), "a line\r\n");
        support::WriteFileBytes(folder_.File(L"Activity1.log"), "a line\r\n");
        outlookScript_.children = {{L"Application.CreateItem", L"Item"}, {L"Item.Attachments", L"Attachments"}};
        notesScript_.children = {{L"Session.GetDatabase", L"Database"},
                                 {L"Database.CreateDocument", L"Document"},
                                 {L"Document.CreateRichTextItem", L"Body"}};
    }
    ~Mail() override { CoUninitialize(); }

    std::unique_ptr<ProgramStandIn> InstallOutlook() {
        return std::make_unique<ProgramStandIn>(mail::kOutlookProgId, kOutlookClass, outlookScript_, L"Application");
    }
    std::unique_ptr<ProgramStandIn> InstallNotes() {
        return std::make_unique<ProgramStandIn>(mail::kNotesProgId, kNotesClass, notesScript_, L"Session");
    }
    support::MailMessage Message() const {
        return {L"support@quorvex.example",
                L"Logs",
                L"first\r\nsecond\r\n",
                {folder_.File(L"Error1.log"), folder_.File(L"Activity1.log")},
                false};
    }
    std::wstring Quoted(const std::wstring& name) const { return L"\"" + folder_.File(name) + L"\""; }

    TempFolder folder_;
    MailScript outlookScript_;
    MailScript notesScript_;
};

TEST_F(Mail, OutlookGetsTheMessageWithEveryFileAndSendsIt) {
    const auto outlook = InstallOutlook();
    const auto notes = InstallNotes(); // comes second
    EXPECT_EQ(mail::Send(Message()).status, MailStatus::Sent);
    EXPECT_THAT(outlookScript_.calls,
                ElementsAre(L"Application.CreateItem(0)", L"Item.Subject = \"Logs\"",
                            L"Item.Body = \"first\r\nsecond\r\n\"", L"Item.To = \"support@quorvex.example\"",
                            L"Item.Attachments()", L"Attachments.Add(" + Quoted(L"Error1.log") + L")",
                            L"Attachments.Add(" + Quoted(L"Activity1.log") + L")", L"Item.Send()"));
    EXPECT_TRUE(notesScript_.calls.empty());
    EXPECT_EQ(outlookScript_.objects, 0) << "every object is released";
}

TEST_F(Mail, AReviewedMessageIsShownAndNotSent) {
    const auto outlook = InstallOutlook();
    support::MailMessage message = Message();
    message.review = true;
    EXPECT_EQ(mail::Send(message).status, MailStatus::Shown);
    EXPECT_EQ(outlookScript_.calls.back(), L"Item.Display()");
}

TEST_F(Mail, NotesGetsTheMessageWhenOutlookIsNotInstalled) {
    const auto notes = InstallNotes();
    EXPECT_EQ(mail::Send(Message()).status, MailStatus::Sent);
    EXPECT_THAT(notesScript_.calls,
                ElementsAre(L"Session.GetDatabase(\"\", \"\")", L"Database.OpenMail()", L"Database.CreateDocument()",
                            L"Document.ReplaceItemValue(\"Form\", \"Memo\")",
                            L"Document.ReplaceItemValue(\"SendTo\", \"support@quorvex.example\")",
                            L"Document.ReplaceItemValue(\"Subject\", \"Logs\")",
                            L"Document.CreateRichTextItem(\"Body\")", L"Body.AppendText(\"first\")",
                            L"Body.AddNewLine(1)", L"Body.AppendText(\"second\")", L"Body.AddNewLine(1)",
                            L"Body.EmbedObject(1454, \"\", " + Quoted(L"Error1.log") + L", \"EMBEDOBJECT\")",
                            L"Body.EmbedObject(1454, \"\", " + Quoted(L"Activity1.log") + L", \"EMBEDOBJECT\")",
                            L"Document.Send(False)"));
    EXPECT_EQ(notesScript_.objects, 0);
}

TEST_F(Mail, WithoutAMailProgramTheResultSaysSo) {
    EXPECT_EQ(mail::Send(Message()).status, MailStatus::NoProgram);
}

TEST_F(Mail, WhatTheProgramRefusesIsAFailureWithItsWords) {
    const auto outlook = InstallOutlook();
    for (const wchar_t* call : {L"Application.CreateItem", L"Item.To", L"Attachments.Add", L"Item.Send"}) {
        outlookScript_.failing = call;
        const support::MailResult result = mail::Send(Message());
        EXPECT_EQ(result.status, MailStatus::Failed) << "at another call";
        EXPECT_EQ(result.detail, L"The user said no");
        EXPECT_EQ(outlookScript_.objects, 0);
    }
}

TEST_F(Mail, AMissingAttachmentFailsBeforeAnyProgramIsStarted) {
    const auto outlook = InstallOutlook();
    support::MailMessage message = Message();
    message.attachments.push_back(folder_.File(L"missing.log"));
    const support::MailResult result = mail::Send(message);
    EXPECT_EQ(result.status, MailStatus::Failed);
    EXPECT_NE(result.detail.find(L"missing.log"), std::wstring::npos);
    EXPECT_TRUE(outlookScript_.calls.empty());
}

// A program that is registered but cannot be started, as after a broken uninstallation.
TEST_F(Mail, ARegisteredProgramThatDoesNotStartIsAFailure) {
    const auto outlook = InstallOutlook();
    outlook->SetClass(L"{6F1D6A7C-2B0E-4F6D-9A8B-51A6C43D0E14}");
    const support::MailResult result = mail::Send(Message());
    EXPECT_EQ(result.status, MailStatus::Failed);
    EXPECT_NE(result.detail.find(L"Outlook.Application"), std::wstring::npos);
    EXPECT_TRUE(outlookScript_.calls.empty());
}

} // namespace
} // namespace quorvex::testing
