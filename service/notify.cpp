#include "service/notify.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace quorvex::service {

void NotifyManager(std::string_view state) {
    const char* const name = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name == nullptr || std::strlen(name) >= sizeof address.sun_path) return;
    std::strcpy(address.sun_path, name);
    if (name[0] == '@') address.sun_path[0] = '\0'; // an abstract name
    const int handle = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (handle < 0) return;
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + std::strlen(name));
    sendto(handle, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address), length);
    close(handle);
}

} // namespace quorvex::service
