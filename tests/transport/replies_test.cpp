// What comes back for the replies that servers give, and what goes out for the URLs that callers build.
#include "testing/socket_server_win.h"
#include "transport/fixture.h"

#include <algorithm>
#include <utility>

namespace quorvex::testing {
namespace {

using RepliesTest = TransportTest;

// The server of most tests: the path names the kind of reply.
void Answer(Connection& connection, const std::string& target) {
    const std::string path = target.substr(0, target.find('?'));
    if (path == "/escaped") {
        connection.Reply("<a>Marks &amp; Spencer</a>&amp;amp;&lt;");
    } else if (path == "/chunked") {
        connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\nTransfer-Encoding: "
                        "chunked\r\n\r\n6\r\n<list>\r\n7\r\n</list>\r\n0\r\n\r\n");
    } else if (path == "/nolength") {
        connection.Send("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\nuntil the end");
        connection.Close();
    } else if (path == "/short") {
        connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 5\r\nConnection: close\r\n\r\nwhole and more");
        connection.Close();
    } else if (path == "/cut") {
        connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n<confirm>yes</confirm>");
        connection.Close();
    } else if (path == "/error") {
        connection.Reply("<html>broken</html>", "500 Internal Server Error");
    } else if (path == "/moved") {
        connection.Reply("gone", "302 Found", "Location: /error\r\n");
    } else if (path == "/empty") {
        connection.Reply("");
    } else if (path == "/latin") {
        connection.Reply("caf\xE9 \xC3\xA9", "200 OK", "Content-Type: text/xml; charset=ISO-8859-1\r\n");
    } else {
        connection.Reply(target);
    }
}

TEST_F(RepliesTest, EachKindOfReplyComesBackWhole) {
    const SocketServer server(Answer);
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"/escaped", L"<a>Marks & Spencer</a>&amp;&lt;"}, // once, from the left
        {L"/chunked", L"<list></list>"},
        {L"/nolength", L"until the end"},
        {L"/short", L"whole"},
        {L"/error", L"<html>broken</html>"},
        {L"/moved", L"<html>broken</html>"},
        {L"/empty", L""},
        {L"/latin", L"caf\u00E9 \u00C3\u00A9"},
    };
    for (const auto& [target, expected] : cases) EXPECT_EQ(Get(server.Url(target)), expected) << target;
    EXPECT_EQ(transport_.LastState(), http::Transport::kComplete);
    EXPECT_FALSE(transport_.Busy());
}

TEST_F(RepliesTest, ACutReplyIsNoReply) {
    const SocketServer server(Answer);
    EXPECT_EQ(Get(server.Url(L"/cut")), L"TimeOut");
    EXPECT_EQ(transport_.LastState(), http::Transport::kError);
    EXPECT_EQ(Get(server.Url(L"/escaped")),
              L"<a>Marks & Spencer</a>&amp;&lt;"); // and the next request is none the worse
}

TEST_F(RepliesTest, OnlyWhatHttpForbidsIsEscapedOnTheWire) {
    const SocketServer server(Answer);
    const std::pair<const wchar_t*, const char*> cases[] = {
        {L"/p.aspx?a=PE13 2QL&b=%41%zz+x=1&COM=1", "GET /p.aspx?a=PE13%202QL&b=%41%zz+x=1&COM=1 HTTP/1.1"},
        {L"/p?a=<b>\"c\"|^`{d}[e]\\~'(;,)", "GET /p?a=<b>\"c\"|^`{d}[e]\\~'(;,) HTTP/1.1"},
        {L"/p?a=caf\u00E9\tx\u20AC", "GET /p?a=caf%C3%A9%09x%E2%82%AC HTTP/1.1"},
        {L"/p?house=FLAT #3&COM=1", "GET /p?house=FLAT%20%233&COM=1 HTTP/1.1"},
        {L"?a=1", "GET /?a=1 HTTP/1.1"},
        {L"", "GET / HTTP/1.1"},
    };
    for (const auto& [target, line] : cases) {
        Get(server.Url(target));
        EXPECT_EQ(server.LastHead().substr(0, server.LastHead().find("\r\n")), line);
    }
}

TEST_F(RepliesTest, AnEmptyUrlTouchesNothing) {
    EXPECT_EQ(Get(L""), L"");
    EXPECT_FALSE(transport_.ProxyChecked());
    EXPECT_EQ(transport_.LastState(), 0);
}

TEST_F(RepliesTest, WhatIsNoWebAddressFailsAtOnce) {
    for (const wchar_t* url :
         {L"nonsense", L"ftp://127.0.0.1/x", L"http://", L"http:///x", L"file:///c:/x", L"http://127.0.0.1:99999/"}) {
        ExpectTimeOut(url);
    }
}

TEST_F(RepliesTest, AnAddressOfTheSixthVersionIsReached) {
    const SocketServer server(Answer, AF_INET6);
    if (!server.Listening()) GTEST_SKIP() << "this machine has no IPv6 loopback address";
    EXPECT_EQ(Get(server.Url(L"/error")), L"<html>broken</html>");
    EXPECT_NE(server.LastHead().find("Host: [::1]"), std::string::npos) << server.LastHead();
}

TEST_F(RepliesTest, ConnectionsAreKeptFromRequestToRequest) {
    const SocketServer server(Answer);
    for (int i = 0; i < 20; ++i) Get(server.Url(L"/escaped"));
    EXPECT_EQ(server.Connections(), 1);
}

} // namespace
} // namespace quorvex::testing
