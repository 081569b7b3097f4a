#pragma once

#include "mail/mailer.h"
#include "object/quorvex.h"

#include <string>

namespace quorvex::update {

// Hands the data folder's activity and error log to the user's mail program, addressed to support with the detailed
// summary as text, and tells the user when that was not possible. Never throws.
void SendLogsToSupport(const object::Quorvex& object, mail::Mailer& mailer, const std::wstring& dataFolder);

} // namespace quorvex::update
