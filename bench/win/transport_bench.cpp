// What one lookup's request costs through the transport, beside a bare asynchronous WinHTTP client and a plain socket
// client, all in one process against one local server. The three take turns, so that whatever else the machine does
// hits them alike.
//
//   transport_bench [requests]
#include "http/transport_win.h"
#include "testing/fake_platform.h"
#include "testing/socket_server_win.h"

#include <winhttp.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kBodyBytes = 2048; // a typical address list
constexpr int kRequests = 400;
constexpr int kWarmUp = 20;

// The least that a program can do with asynchronous WinHTTP: one session, one event, no messages, no limits, no text.
class BareClient {
  public:
    BareClient()
        : done_(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
          session_(WinHttpOpen(L"bare", WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, nullptr, nullptr, WINHTTP_FLAG_ASYNC)) {}
    ~BareClient() {
        WinHttpCloseHandle(session_);
        CloseHandle(done_);
    }
    BareClient(const BareClient&) = delete;
    BareClient& operator=(const BareClient&) = delete;

    std::size_t Get(int port) {
        const HINTERNET connection = WinHttpConnect(session_, L"127.0.0.1", static_cast<INTERNET_PORT>(port), 0);
        const HINTERNET request = WinHttpOpenRequest(connection, L"GET", L"/page?a=1", nullptr, nullptr, nullptr, 0);
        DWORD_PTR context = reinterpret_cast<DWORD_PTR>(this);
        WinHttpSetStatusCallback(request, OnStatus, WINHTTP_CALLBACK_FLAG_ALL_COMPLETIONS, 0);
        std::string body;
        if (Step(WinHttpSendRequest(request, nullptr, 0, nullptr, 0, 0, context)) &&
            Step(WinHttpReceiveResponse(request, nullptr))) {
            while (Step(WinHttpReadData(request, buffer_.data(), static_cast<DWORD>(buffer_.size()), nullptr)) &&
                   bytes_ != 0) {
                body.append(buffer_.data(), bytes_);
            }
        }
        WinHttpSetStatusCallback(request, nullptr, 0, 0);
        WinHttpCloseHandle(request);
        WinHttpCloseHandle(connection);
        return body.size();
    }

  private:
    bool Step(BOOL started) {
        if (started) WaitForSingleObject(done_, INFINITE);
        return started && !failed_;
    }
    static void CALLBACK OnStatus(HINTERNET, DWORD_PTR context, DWORD status, void*, DWORD length) {
        auto* const self = reinterpret_cast<BareClient*>(context);
        if (status == WINHTTP_CALLBACK_STATUS_READ_COMPLETE) self->bytes_ = length;
        if (status == WINHTTP_CALLBACK_STATUS_REQUEST_ERROR) self->failed_ = true;
        SetEvent(self->done_);
    }

    const HANDLE done_;
    const HINTERNET session_;
    std::atomic<DWORD> bytes_{0};
    std::atomic<bool> failed_{false};
    std::array<char, 65536> buffer_;
};

// A connection of its own for each request, read to the end of the body.
std::size_t SocketGet(int port) {
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<u_short>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::string reply;
    const std::string request = "GET /page?a=1 HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
    if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        send(socket, request.data(), static_cast<int>(request.size()), 0) > 0) {
        std::array<char, 4096> buffer;
        std::size_t head = std::string::npos;
        while (head == std::string::npos || reply.size() < head + 4 + kBodyBytes) {
            const int got = recv(socket, buffer.data(), static_cast<int>(buffer.size()), 0);
            if (got <= 0) break;
            reply.append(buffer.data(), static_cast<std::size_t>(got));
            head = reply.find("\r\n\r\n");
        }
        if (head != std::string::npos) reply.erase(0, head + 4);
    }
    closesocket(socket);
    return reply.size();
}

struct Contender {
    const char* name;
    std::function<std::size_t()> get;
    std::vector<double> milliseconds;
};

double Percentile(std::vector<double> values, std::size_t percent) {
    const std::size_t at = values.size() * percent / 100;
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(at), values.end());
    return values[at];
}

bool Measure(Contender& contender, bool keep) {
    const auto start = std::chrono::steady_clock::now();
    const std::size_t size = contender.get();
    const auto taken = std::chrono::steady_clock::now() - start;
    if (keep) contender.milliseconds.push_back(std::chrono::duration<double, std::milli>(taken).count());
    if (size != kBodyBytes) std::fprintf(stderr, "%s: %zu bytes instead of %zu\n", contender.name, size, kBodyBytes);
    return size == kBodyBytes;
}

} // namespace

int main(int argc, char** argv) {
    using namespace quorvex;
    const int requests = argc > 1 ? std::max(1, std::atoi(argv[1])) : kRequests;
    const testing::SocketServer server(
        [body = std::string(kBodyBytes, 'x')](testing::Connection& connection, const std::string&) {
            connection.Reply(body);
        });
    testing::FakePlatform platform;
    http::Transport transport(platform);
    BareClient bare;
    const std::wstring url = server.Url(L"/page?a=1");
    std::vector<Contender> contenders = {
        {"transport", [&] { return transport.GetURL(url, 30).size(); }, {}},
        {"bare WinHTTP", [&] { return bare.Get(server.Port()); }, {}},
        {"plain socket", [&] { return SocketGet(server.Port()); }, {}},
    };
    std::vector<std::size_t> turns = {0, 1, 2};
    std::minstd_rand random; // in changing order: who follows whom must not matter
    for (int i = 0; i < kWarmUp + requests; ++i) {
        std::shuffle(turns.begin(), turns.end(), random);
        for (const std::size_t turn : turns) {
            if (!Measure(contenders[turn], i >= kWarmUp)) return 1;
        }
    }
    std::printf("%d requests of %zu bytes each, in milliseconds\n%-14s %8s %16s\n", requests, kBodyBytes, "", "median",
                "fastest tenth");
    for (const Contender& contender : contenders) {
        std::printf("%-14s %8.3f %16.3f\n", contender.name, Percentile(contender.milliseconds, 50),
                    Percentile(contender.milliseconds, 10));
    }
    const auto ratio = [&contenders](std::size_t percent) {
        return Percentile(contenders[0].milliseconds, percent) / Percentile(contenders[1].milliseconds, percent);
    };
    std::printf("transport / bare WinHTTP: %.2f, fastest tenth %.2f (goal: at most 1.20)\n", ratio(50), ratio(10));
    return 0;
}
