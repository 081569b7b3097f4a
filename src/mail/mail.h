#pragma once

#include "mail/mailer.h"

namespace quorvex::mail {

// Hands a message with attached files to the mail program that is installed: "Outlook.Application", else
// "Notes.Notessession". A message to be reviewed is shown by the first and sent by the second, which has no such
// window. Attachments that are not there are a failure before any program is started. Never throws; needs COM on the
// thread.
MailResult Send(const MailMessage& message) noexcept;

} // namespace quorvex::mail
