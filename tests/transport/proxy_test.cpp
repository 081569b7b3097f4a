// The proxy file in the current directory.
#include "testing/socket_server_win.h"
#include "transport/fixture.h"

#include "support/files.h"
#include "support/text.h"

namespace quorvex::testing {
namespace {

class ProxyTest : public TransportTest {
  protected:
    void WriteProxyFile(const std::string& text) { support::WriteFileBytes(Path(L"RegServerProxySettings.xml"), text); }
    // Some systems name the scheme's own port in the request line.
    static std::wstring WithoutPort(const std::wstring& url) { return support::ReplaceAll(url, L":80/", L"/"); }
    std::string Address() const { return "127.0.0.1:" + std::to_string(server_.Port()); }

    // Plays the proxy and, asked directly, the server.
    const SocketServer server_{[](Connection& connection, const std::string& target) { connection.Reply(target); }};
    const std::wstring unknown_ = L"http://service.invalid/page?a=1";
};

TEST_F(ProxyTest, TheNamedProxyIsAskedForTheWholeAddress) {
    WriteProxyFile("<settings>\r\n <Proxy_Port_80>\r\n " + Address() + "\r\n</Proxy_Port_80></settings>");
    EXPECT_EQ(WithoutPort(Get(unknown_)), unknown_);
    EXPECT_TRUE(transport_.GetHTTPFile(unknown_, Path(L"page.txt"), L""));
    EXPECT_EQ(WithoutPort(support::FromUtf8(support::ReadFileBytes(Path(L"page.txt")))), unknown_);
    EXPECT_TRUE(transport_.ProxyChecked());
    // Read again for every request.
    ASSERT_TRUE(support::DeleteFileQuietly(Path(L"RegServerProxySettings.xml")));
    EXPECT_EQ(Get(unknown_), L"TimeOut");
    EXPECT_EQ(Get(server_.Url(L"/direct")), L"/direct");
}

TEST_F(ProxyTest, AFileThatNamesNoProxyIsIgnored) {
    for (const char* text :
         {"<settings/>", "<Proxy_Port_80></Proxy_Port_80>", "<proxy_port_80>1.2.3.4:1</proxy_port_80>", ""}) {
        WriteProxyFile(text);
        EXPECT_EQ(Get(server_.Url(L"/direct")), L"/direct") << text;
    }
}

TEST_F(ProxyTest, AProxyThatIsNoneFailsLikeTheNetwork) {
    const std::string dead = "127.0.0.1:" + std::to_string(ClosedPort());
    for (const std::string& name : {std::string("not a proxy"), std::string("http://"), dead}) {
        WriteProxyFile("<Proxy_Port_80>" + name + "</Proxy_Port_80>");
        EXPECT_EQ(Get(server_.Url(L"/direct")), L"TimeOut") << name;
    }
}

} // namespace
} // namespace quorvex::testing
