#pragma once

#include <string>

namespace quorvex::http {

// "host:port" from the element <Proxy_Port_80> of the file "RegServerProxySettings.xml" in the current directory; empty
// when there is no such file, element or text.
std::wstring ProxyFromFile();

} // namespace quorvex::http
