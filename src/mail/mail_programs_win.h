#pragma once

#include "mail/mailer.h"

namespace quorvex::mail {

inline constexpr wchar_t kOutlookProgId[] = L"Outlook.Application";
inline constexpr wchar_t kNotesProgId[] = L"Notes.Notessession";

// Send through one program. Throw Error with what the program said.
MailStatus SendByOutlook(const MailMessage& message);
MailStatus SendByNotes(const MailMessage& message);

} // namespace quorvex::mail
