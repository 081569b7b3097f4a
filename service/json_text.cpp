#include "service/json_text.h"

#include "support/text.h"

namespace quorvex::service {

std::string JsonText(const std::string& text) {
    std::string quoted;
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted.append(1, '\\').append(1, c);
        } else if (static_cast<unsigned char>(c) < 32 || static_cast<unsigned char>(c) == 127) {
            quoted.push_back(' ');
        } else {
            quoted.push_back(c);
        }
    }
    return support::IsValidUtf8(quoted) ? quoted : support::ToUtf8(support::FromLatin1(quoted));
}

} // namespace quorvex::service
