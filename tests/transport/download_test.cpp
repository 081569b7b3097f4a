// Downloads to a file.
#include "testing/socket_server_win.h"
#include "transport/fixture.h"

#include "support/files.h"

#include <algorithm>

namespace quorvex::testing {
namespace {

std::string Bytes(std::size_t size) {
    std::string bytes(size, '\0');
    unsigned state = 1;
    std::generate(bytes.begin(), bytes.end(), [&state] {
        state = state * 1103515245 + 12345;
        return static_cast<char>(state >> 16);
    });
    return bytes;
}

class DownloadTest : public TransportTest {
  protected:
    bool Download(const SocketServer& server, const std::wstring& target = L"/UPDATE_F_20260131.zip") {
        return transport_.GetHTTPFile(server.Url(target), file_, L"Downloading Update: 1/1");
    }
    // The files now in the test's folder.
    std::vector<std::wstring> Files() const { return support::ListFiles(Path(L""), L"", L""); }

    const std::wstring file_ = Path(L"UPDATE_F_20260131.zip");
};

TEST_F(DownloadTest, TheFileHoldsEveryByteAndProgressIsShown) {
    const std::string bytes = Bytes(1'500'000);
    const SocketServer server([&](Connection& connection, const std::string&) { connection.Reply(bytes); });
    support::WriteFileBytes(file_, "an earlier one that is gone then");
    std::wstring target;
    platform_.onProgress = [&] { target = transport_.TargetFile(); };
    ASSERT_TRUE(Download(server));
    EXPECT_EQ(support::ReadFileBytes(file_), bytes);
    EXPECT_EQ(Files().size(), 1U);
    EXPECT_EQ(target, file_);
    EXPECT_EQ(transport_.TargetFile(), L"");
    ASSERT_GE(platform_.progress.size(), 2U);
    EXPECT_EQ(platform_.progress.front(), L"Get file: UPDATE_F_20260131.zip\r\n0 Mb of 2 Mb 0%");
    EXPECT_EQ(platform_.progress.back(), L"Get file: UPDATE_F_20260131.zip\r\n2 Mb of 2 Mb 100%");
    EXPECT_EQ(platform_.captions.back(), L"Downloading Update: 1/1");
    EXPECT_FALSE(platform_.progressShown);
}

TEST_F(DownloadTest, NothingIsLeftOfADownloadThatFails) {
    const SocketServer server([](Connection& connection, const std::string& target) {
        if (target == "/missing") {
            connection.Reply("<html>no such file</html>", "404 Not Found");
            return;
        }
        connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n" + std::string(70000, 'x'));
        if (target == "/silent") connection.StaySilent();
        if (target == "/reset") connection.Reset();
        connection.Close();
    });
    http::Transport impatient(platform_, {kShortLimit, http::SecondsSinceMidnight});
    for (const wchar_t* target : {L"/missing", L"/cut", L"/reset", L"/silent"}) {
        EXPECT_FALSE(impatient.GetHTTPFile(server.Url(target), file_, L"")) << target;
        EXPECT_EQ(Files(), std::vector<std::wstring>()) << target;
        EXPECT_FALSE(platform_.progressShown);
        EXPECT_FALSE(http::RequestRunning());
    }
    EXPECT_FALSE(transport_.GetHTTPFile(L"http://127.0.0.1:" + std::to_wstring(ClosedPort()) + L"/", file_, L""));
}

TEST_F(DownloadTest, CancelDeletesThePart) {
    // Faster than any pause between two pieces: the click must be seen nevertheless.
    const SocketServer server([](Connection& connection, const std::string&) {
        connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 2000000000\r\n\r\n");
        while (connection.Send(std::string(65536, 'x'))) {
        }
    });
    const After stop(200, [&] { transport_.StopRequest(); });
    const double taken = Milliseconds([&] { EXPECT_FALSE(Download(server)); });
    EXPECT_LT(taken, kSoon);
    EXPECT_TRUE(stop.Fired());
    EXPECT_EQ(Files(), std::vector<std::wstring>());
}

TEST_F(DownloadTest, ADownloadMayTakeLongerThanItsSilenceLimit) {
    const SocketServer server([](Connection& connection, const std::string&) {
        connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n");
        for (int i = 0; i < 10 && connection.Send("x"); ++i) connection.StaySilent(150);
    });
    http::Transport impatient(platform_, {kShortLimit, http::SecondsSinceMidnight});
    EXPECT_TRUE(impatient.GetHTTPFile(server.Url(L"/"), file_, L""));
    EXPECT_EQ(support::ReadFileBytes(file_), "xxxxxxxxxx");
}

TEST_F(DownloadTest, WithoutALengthTheFileIsEmptyAndThatIsSuccess) {
    const SocketServer server([](Connection& connection, const std::string& target) {
        if (target == "/zero") {
            connection.Reply("");
            return;
        }
        connection.Send("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\nsome bytes");
        connection.Close();
    });
    for (const wchar_t* target : {L"/zero", L"/none"}) {
        EXPECT_TRUE(Download(server, target)) << target;
        EXPECT_EQ(support::ReadFileBytes(file_), "");
    }
}

TEST_F(DownloadTest, APlaceThatCannotBeWrittenFails) {
    const SocketServer server([](Connection& connection, const std::string&) { connection.Reply("bytes"); });
    EXPECT_FALSE(transport_.GetHTTPFile(server.Url(L"/"), Path(L"no such folder\\file.zip"), L""));
    EXPECT_FALSE(transport_.GetHTTPFile(server.Url(L"/"), L"", L""));
    const HANDLE held = CreateFileW(file_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW, 0, nullptr);
    DWORD written = 0;
    WriteFile(held, "held", 4, &written, nullptr);
    EXPECT_FALSE(Download(server));
    CloseHandle(held);
    EXPECT_EQ(support::ReadFileBytes(file_), "held");
}

} // namespace
} // namespace quorvex::testing
