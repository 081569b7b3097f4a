// What happens while a request waits: limits, cancelling, messages, other requests.
#include "testing/socket_server_win.h"
#include "transport/fixture.h"

#include "support/files.h"
#include "support/message_pump_win.h"
#include "support/process_state.h"
#include "support/text.h"

#include <atomic>
#include <thread>
#include <utility>
#include <vector>

namespace quorvex::testing {
namespace {

using WaitingTest = TransportTest;

void NeverAnswer(Connection& connection, const std::string&) {
    connection.StaySilent();
}

void AnswerAfter(Connection& connection, int milliseconds) {
    connection.StaySilent(milliseconds);
    connection.Reply("late");
}

TEST_F(WaitingTest, SilenceAndDribbleEndAtTheLimit) {
    const SocketServer server([](Connection& connection, const std::string& target) {
        if (target == "/silent") return NeverAnswer(connection, target);
        // The first byte comes with the head: some systems then read on inside the call.
        connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nx");
        while (!connection.ServerStopping() && connection.Send("x")) connection.StaySilent(100);
    });
    for (const wchar_t* target : {L"/silent", L"/dribble"}) {
        EXPECT_GE(ExpectTimeOut(server.Url(target), kShortLimit), kShortLimit * 1000) << target;
        EXPECT_FALSE(transport_.Busy());
    }
}

TEST_F(WaitingTest, ADeadNetworkFailsAtOnce) {
    const SocketServer server([](Connection& connection, const std::string& target) {
        if (target == "/half") connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\npart");
        if (target == "/noise") connection.Send("this is not HTTP\r\n\r\n");
        connection.Reset();
    });
    const std::wstring refused = L"http://127.0.0.1:" + std::to_wstring(ClosedPort()) + L"/";
    const std::wstring urls[] = {refused,
                                 server.Url(L"/reset"),
                                 server.Url(L"/half"),
                                 server.Url(L"/noise"),
                                 L"https" + refused.substr(4),
                                 L"http://no-such-host.invalid/"};
    for (const std::wstring& url : urls) {
        ExpectTimeOut(url, 0, 5000);
        EXPECT_EQ(transport_.LastState(), http::Transport::kError);
    }
}

TEST_F(WaitingTest, StopEndsARequestAtOnce) {
    const SocketServer server(NeverAnswer);
    const After stop(150, [&] {
        EXPECT_TRUE(transport_.Busy());
        transport_.StopRequest();
        EXPECT_TRUE(transport_.CancelRequested());
    });
    ExpectTimeOut(server.Url(L"/"));
    EXPECT_FALSE(transport_.CancelRequested());
}

TEST_F(WaitingTest, StopWorksFromAnotherThreadAndNotOnTheNextRequest) {
    const SocketServer server([](Connection& connection, const std::string& target) {
        if (target == "/silent") return NeverAnswer(connection, target);
        AnswerAfter(connection, 50);
    });
    transport_.StopRequest(); // nothing is running: no effect on what comes
    EXPECT_EQ(Get(server.Url(L"/late")), L"late");
    std::thread other([&] {
        Sleep(150);
        transport_.StopRequest();
    });
    ExpectTimeOut(server.Url(L"/silent"));
    other.join();
    EXPECT_EQ(Get(server.Url(L"/late")), L"late");
}

TEST_F(WaitingTest, TheQuitMessageEndsTheRequestAndStaysInTheQueue) {
    const SocketServer server(NeverAnswer);
    const After quit(100, [] { PostQuitMessage(7); });
    ExpectTimeOut(server.Url(L"/"));
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 7U);
}

TEST_F(WaitingTest, MessagesRunAndASecondRequestGetsNothing) {
    const SocketServer server([](Connection& connection, const std::string&) { AnswerAfter(connection, 400); });
    ShowingPlatform otherPlatform;
    http::Transport other(otherPlatform);
    std::wstring same = L"?";
    std::wstring foreign = L"?";
    bool downloaded = true;
    const After reenter(50, [&] {
        EXPECT_TRUE(http::RequestRunning());
        same = Get(server.Url(L"/again"));
        foreign = other.GetURL(server.Url(L"/other"), kLongLimit);
        downloaded = transport_.GetHTTPFile(server.Url(L"/file"), Path(L"file.zip"), L"");
    });
    EXPECT_EQ(Get(server.Url(L"/first")), L"late"); // undisturbed
    EXPECT_EQ(same, L"");
    EXPECT_EQ(foreign, L"");
    EXPECT_FALSE(downloaded);
    EXPECT_EQ(server.Heads().size(), 1U);
    EXPECT_FALSE(http::RequestRunning());
}

// Web back ends answer many visitors at a time. No request is answered before all have arrived.
TEST_F(WaitingTest, RequestsOf64ThreadsRunSideBySideEachWithItsOwnState) {
    constexpr int kThreads = 64;
    std::atomic<int> arrived{0};
    const SocketServer server([&](Connection& connection, const std::string& target) {
        ++arrived;
        while (arrived < kThreads && !connection.ServerStopping()) connection.StaySilent(20);
        if (target == "/17") return NeverAnswer(connection, target);
        connection.Reply(target);
    });
    std::vector<std::wstring> replies(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            ShowingPlatform platform;
            http::Transport transport(platform);
            std::thread stopper;
            if (i == 17) {
                stopper = std::thread([&] {
                    for (int n = 0; n < 1500 && arrived < kThreads; ++n) Sleep(20);
                    transport.StopRequest();
                });
            }
            replies[static_cast<std::size_t>(i)] = transport.GetURL(server.Url(L"/" + std::to_wstring(i)), 60);
            if (stopper.joinable()) stopper.join();
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (int i = 0; i < kThreads; ++i) {
        const std::wstring expected = i == 17 ? L"TimeOut" : L"/" + std::to_wstring(i);
        EXPECT_EQ(replies[static_cast<std::size_t>(i)], expected);
    }
}

// A host whose queue is never empty: a window that never validates its paint, a timer that outruns its handler.
class BusyHost {
  public:
    BusyHost() {
        WNDCLASSW type{};
        type.lpfnWndProc = Procedure;
        type.lpszClassName = L"QuorvexBusyHost";
        RegisterClassW(&type);
        window_ = CreateWindowExW(0, type.lpszClassName, L"", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50, nullptr, nullptr,
                                  nullptr, nullptr);
        SetTimer(window_, 1, 10, nullptr);
    }
    ~BusyHost() { DestroyWindow(window_); }
    BusyHost(const BusyHost&) = delete;
    BusyHost& operator=(const BusyHost&) = delete;

    static inline int messages = 0;

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_PAINT) return ++messages, 0;
        if (message == WM_TIMER) return ++messages, Sleep(15), 0;
        return DefWindowProcW(window, message, wParam, lParam);
    }

    HWND window_;
};

TEST_F(WaitingTest, ABusyHostGetsItsReplyAndItsMessages) {
    const std::string body(400000, 'x');
    const SocketServer server([&](Connection& connection, const std::string&) {
        connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 400000\r\n\r\n");
        for (std::size_t at = 0; at < body.size(); at += 50000) {
            connection.Send(std::string_view(body).substr(at, 50000));
            connection.StaySilent(5);
        }
    });
    const BusyHost host;
    BusyHost::messages = 0;
    EXPECT_EQ(Get(server.Url(L"/")).size(), body.size());
    EXPECT_TRUE(transport_.GetHTTPFile(server.Url(L"/file"), Path(L"file.zip"), L""));
    EXPECT_GT(BusyHost::messages, 4);
}

TEST_F(WaitingTest, AFailureIsLoggedWithItsCauseAndWithoutTheKey) {
    using Kind = http::RequestFailure::Kind;
    const SocketServer server([](Connection& connection, const std::string& target) {
        if (target.starts_with("/cut")) connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\npart");
        if (target.starts_with("/page")) connection.Reply("sorry", "503 Busy");
        if (target.starts_with("/silent")) NeverAnswer(connection, target);
        connection.Close();
    });
    support::Process().dataPath = support::FromPath(std::filesystem::current_path());
    const std::wstring nobody = L"http://127.0.0.1:" + std::to_wstring(ClosedPort());
    const std::pair<std::wstring, std::wstring> cases[] = {
        {nobody, L"connection refused or host not reachable; stage: connecting and sending; Windows error 12029"},
        {L"http://no-such-host.invalid", L"host name not resolved; stage: connecting and sending; Windows error 12007; "
                                         L"host no-such-host.invalid:80; "},
        {server.Url(L"/silent"), L"timed out; stage: "},
        {server.Url(L"/cut"), L"stage: reading the reply"},
        {server.Url(L"/page"), L"error page; stage: after the reply; status 503"},
        {L"ftp://host", L"Not a web address; stage: preparing; Windows error 12005"},
    };
    for (const auto& [url, words] : cases) {
        support::DeleteFileQuietly(Path(L"Error1.log"));
        Get(url + L"?datakey=SECRET7&postcode=AB1", kShortLimit);
        EXPECT_NE(transport_.Failure().kind, Kind::None) << url;
        const std::wstring line = support::FromUtf8(support::ReadFileBytes(Path(L"Error1.log")));
        EXPECT_NE(line.find(words), std::wstring::npos) << line;
        EXPECT_NE(line.find(L"?datakey=***&postcode=AB1"), std::wstring::npos) << line;
        EXPECT_NE(line.find(L" ms; "), std::wstring::npos) << line;
        EXPECT_EQ(line.find(L"SECRET7"), std::wstring::npos) << line;
    }
    support::Process().dataPath = L"";
}

TEST_F(WaitingTest, WaitingCostsNoProcessorTime) {
    // The request waits on a thread of its own so that the server's polling is not counted with it.
    const SocketServer server(NeverAnswer);
    const auto threadTime = [] {
        FILETIME created, ended, kernel, user;
        GetThreadTimes(GetCurrentThread(), &created, &ended, &kernel, &user);
        return static_cast<double>(kernel.dwLowDateTime + user.dwLowDateTime) / 10000; // milliseconds
    };
    std::thread([&] {
        const double before = threadTime();
        EXPECT_EQ(Get(server.Url(L"/"), 2), L"TimeOut");
        EXPECT_LT(threadTime() - before, 60); // 3 % of the two seconds
    }).join();
}

LRESULT CALLBACK NeverPaint(HWND window, UINT message, WPARAM w, LPARAM l) {
    return message == WM_PAINT ? 0 : DefWindowProcW(window, message, w, l);
}

TEST_F(WaitingTest, AnEndlessRepaintDoesNotHideTheLimit) {
    const SocketServer server(NeverAnswer);
    const HWND window = CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50, nullptr, nullptr,
                                        GetModuleHandleW(nullptr), nullptr);
    ASSERT_NE(window, nullptr);
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(NeverPaint));
    InvalidateRect(window, nullptr, FALSE);
    ExpectTimeOut(server.Url(L"/"), kShortLimit);
    DestroyWindow(window);
}

TEST_F(WaitingTest, TheSystemLetsAbandonedRequestsGo) {
    const auto settled = [](long most) {
        for (int i = 0; i < 500 && http::OutstandingRequests() > most; ++i) Sleep(20);
        return http::OutstandingRequests() <= most;
    };
    ASSERT_TRUE(settled(0)); // those of earlier tests
    {
        const SocketServer server(NeverAnswer);
        EXPECT_EQ(Get(server.Url(L"/"), kShortLimit), L"TimeOut");
        EXPECT_LE(http::OutstandingRequests(), 1);
    }
    EXPECT_TRUE(settled(0));
}

// Time stands still just before midnight until told otherwise.
class ClockTest : public TransportTest {
  protected:
    double seconds_ = 86399.95;
    http::Transport timed_{platform_, {1, [this] { return seconds_; }}};
};

TEST_F(ClockTest, TheLimitIsMeasuredByTheDaysClock) {
    const SocketServer server(NeverAnswer);
    seconds_ = 43200;
    const After later(100, [&] { seconds_ += 0.9; });
    const double taken = Milliseconds([&] { EXPECT_EQ(timed_.GetURL(server.Url(L"/"), 0.8), L"TimeOut"); });
    EXPECT_LT(taken, kSoon);
}

TEST_F(ClockTest, ARequestThatCrossesMidnightDoesNotTimeOut) {
    const SocketServer server([](Connection& connection, const std::string&) { AnswerAfter(connection, 1500); });
    const After midnight(100, [&] { seconds_ = 20; });
    EXPECT_EQ(timed_.GetURL(server.Url(L"/"), 1), L"late"); // after one and a half limits
}

TEST_F(ClockTest, ADeadConnectionEndsAfterMidnightToo) {
    const SocketServer server(NeverAnswer);
    const After midnight(100, [&] { seconds_ = 20; });
    const double taken = Milliseconds([&] { EXPECT_EQ(timed_.GetURL(server.Url(L"/"), 0.2), L"TimeOut"); });
    EXPECT_LT(taken, 2000 + kSoon);
}

} // namespace
} // namespace quorvex::testing
