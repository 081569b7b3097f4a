#include "mail/mail.h"

#include "mail/mail_programs_win.h"
#include "support/files.h"
#include "testing/scripted_object_win.h"
#include "testing/temp_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <objbase.h>

namespace quorvex::testing {
namespace {

using mail::MailStatus;
using ::testing::ElementsAre;

class Mail : public ::testing::Test {
  protected:
    Mail() {
        EXPECT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
        for (const wchar_t* name : {L"Error1.log", L"Activity1.log"}) {
            support::WriteFileBytes(folder_.File(name), "a line\r\n");
            files_.push_back(folder_.File(name));
            quoted_.push_back(L"\"" + folder_.File(name) + L"\"");
        }
    }
    ~Mail() override { CoUninitialize(); }

    // An object of a mail program: takes every call, and some of them give another object.
    ScriptedObject* Make(const std::wstring& name) {
        return &(new ScriptedObject(calls_, name))->Any([this](const std::wstring& call) -> support::Variant {
            if (call == failing_) throw support::Error(E_FAIL, L"The user said no");
            static const std::map<std::wstring, const wchar_t*> kChildren = {
                {L"Application.CreateItem", L"Item"},      {L"Item.Attachments", L"Attachments"},
                {L"Session.GetDatabase", L"Database"},     {L"Database.CreateDocument", L"Document"},
                {L"Document.CreateRichTextItem", L"Body"},
            };
            const auto child = kChildren.find(call);
            return child == kChildren.end() ? support::Variant() : Returned(Make(child->second));
        });
    }
    void InstallOutlook() {
        outlook_.emplace(mail::kOutlookProgId, L"{6F1D6A7C-2B0E-4F6D-9A8B-51A6C43D0E11}",
                         [this] { return Make(L"Application"); });
    }
    void InstallNotes() {
        notes_.emplace(mail::kNotesProgId, L"{6F1D6A7C-2B0E-4F6D-9A8B-51A6C43D0E12}",
                       [this] { return Make(L"Session"); });
    }
    mail::MailMessage Message(bool review = false) const {
        return {L"support@quorvex.example", L"Logs", L"first\r\nsecond\r\n", files_, review};
    }

    TempFolder folder_;
    std::vector<std::wstring> files_;
    std::vector<std::wstring> quoted_;
    std::vector<std::wstring> calls_;
    std::wstring failing_; // the call that fails
    std::optional<ProgramStandIn> outlook_;
    std::optional<ProgramStandIn> notes_;
};

TEST_F(Mail, OutlookGetsTheMessageWithEveryFileAndSendsIt) {
    InstallOutlook();
    InstallNotes(); // comes second
    EXPECT_EQ(mail::Send(Message()).status, MailStatus::Sent);
    EXPECT_THAT(calls_, ElementsAre(L"Application.CreateItem(0)", L"Item.Subject = \"Logs\"",
                                    L"Item.Body = \"first\r\nsecond\r\n\"", L"Item.To = \"support@quorvex.example\"",
                                    L"Item.Attachments()", L"Attachments.Add(" + quoted_[0] + L")",
                                    L"Attachments.Add(" + quoted_[1] + L")", L"Item.Send()"));
    EXPECT_EQ(mail::Send(Message(true)).status, MailStatus::Shown);
    EXPECT_EQ(calls_.back(), L"Item.Display()") << "a message to be reviewed is not sent";
}

TEST_F(Mail, NotesGetsTheMessageWhenOutlookIsNotInstalled) {
    EXPECT_EQ(mail::Send(Message()).status, MailStatus::NoProgram);
    InstallNotes();
    EXPECT_EQ(mail::Send(Message()).status, MailStatus::Sent);
    EXPECT_THAT(calls_, ElementsAre(L"Session.GetDatabase(\"\", \"\")", L"Database.OpenMail()",
                                    L"Database.CreateDocument()", L"Document.ReplaceItemValue(\"Form\", \"Memo\")",
                                    L"Document.ReplaceItemValue(\"SendTo\", \"support@quorvex.example\")",
                                    L"Document.ReplaceItemValue(\"Subject\", \"Logs\")",
                                    L"Document.CreateRichTextItem(\"Body\")", L"Body.AppendText(\"first\")",
                                    L"Body.AddNewLine(1)", L"Body.AppendText(\"second\")", L"Body.AddNewLine(1)",
                                    L"Body.EmbedObject(1454, \"\", " + quoted_[0] + L", \"EMBEDOBJECT\")",
                                    L"Body.EmbedObject(1454, \"\", " + quoted_[1] + L", \"EMBEDOBJECT\")",
                                    L"Document.Send(False)"));
}

TEST_F(Mail, WhatTheProgramRefusesIsAFailureWithItsWords) {
    InstallOutlook();
    for (const wchar_t* call : {L"Application.CreateItem", L"Item.To", L"Attachments.Add", L"Item.Send"}) {
        failing_ = call;
        const mail::MailResult result = mail::Send(Message());
        EXPECT_EQ(result.status, MailStatus::Failed) << call;
        EXPECT_EQ(result.detail, L"The user said no");
    }
}

TEST_F(Mail, AMissingAttachmentOrABrokenInstallationFailsBeforeAnyCall) {
    InstallOutlook();
    mail::MailMessage message = Message();
    message.attachments.push_back(folder_.File(L"missing.log"));
    mail::MailResult result = mail::Send(message);
    EXPECT_EQ(result.status, MailStatus::Failed);
    EXPECT_NE(result.detail.find(L"missing.log"), std::wstring::npos);
    outlook_->SetClass(L"{6F1D6A7C-2B0E-4F6D-9A8B-51A6C43D0E14}"); // as after a broken uninstallation
    result = mail::Send(Message());
    EXPECT_EQ(result.status, MailStatus::Failed);
    EXPECT_NE(result.detail.find(L"Outlook.Application"), std::wstring::npos);
    EXPECT_TRUE(calls_.empty());
}

} // namespace
} // namespace quorvex::testing
