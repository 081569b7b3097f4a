#pragma once

#include <string>
#include <vector>

namespace quorvex::mail {

// A message for the user's mail program.
struct MailMessage {
    std::wstring to;
    std::wstring subject;
    std::wstring body;
    std::vector<std::wstring> attachments; // full paths
    bool review = false;                   // shown for the user to send, if the program can do so
};
enum class MailStatus { Sent, Shown, NoProgram, Failed };
struct MailResult {
    MailStatus status = MailStatus::NoProgram;
    std::wstring detail; // what the mail program said when it failed
};

class Mailer {
  public:
    virtual ~Mailer() = default;

    // Hands the message to the user's mail program. Does not throw.
    virtual MailResult SendMail(const MailMessage& message) = 0;
};

} // namespace quorvex::mail
