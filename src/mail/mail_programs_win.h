#pragma once

#include "support/platform.h"

namespace quorvex::mail {

inline constexpr wchar_t kOutlookProgId[] = L"Outlook.Application";
inline constexpr wchar_t kNotesProgId[] = L"Notes.Notessession";

// Send through one program. Throw Error with what the program said.
support::MailStatus SendByOutlook(const support::MailMessage& message);
support::MailStatus SendByNotes(const support::MailMessage& message);

} // namespace quorvex::mail
