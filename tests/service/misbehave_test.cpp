#include "fixture.h"

#include <chrono>
#include <thread>

namespace quorvex::service {
namespace {

constexpr char kPage[] = "/xmlservice/SearchForAddress.aspx?datakey=K&postcode=PE13 9AN&COM=1";

class Misbehave : public ServiceTest {
  protected:
    Misbehave() {
        options.test = true;
        Begin();
        good = Body(kPage);
    }

    void Next(const std::string& query) { EXPECT_EQ(Body("/test/next?" + query), "ok\n"); }

    static std::chrono::milliseconds Since(std::chrono::steady_clock::time_point start) {
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    }

    std::string good;
};

TEST_F(Misbehave, OnSomePagesOrForSomeTime) {
    Next("mode=error&count=2");
    EXPECT_EQ(Request(kPage)->status, 500);
    EXPECT_EQ(Request(kPage)->status, 500);
    EXPECT_EQ(Body(kPage), good);
    Next("mode=empty&count=0&page=GetLookups");
    EXPECT_EQ(Body(kPage), good);
    EXPECT_EQ(Body("/XMLService/GetLookups.aspx?datatype=1"), "");
    EXPECT_EQ(Body("/XMLService/GetLookups.aspx?datatype=1"), "");
    EXPECT_EQ(Body("/test/reset"), "ok\n");
    EXPECT_NE(Body("/XMLService/GetLookups.aspx?datatype=1"), "");
}

TEST_F(Misbehave, Lengths) {
    Next("mode=cut&count=2");
    EXPECT_FALSE(Request(kPage)) << "half a reply counted as whole";
    EXPECT_FALSE(Request("/updates/UPDATE_F_20260228.zip"));
    Next("mode=longer");
    EXPECT_FALSE(Request(kPage));
    Next("mode=shorter");
    EXPECT_EQ(Body(kPage), good.substr(0, good.size() / 2));
    Next("mode=nolength");
    const httplib::Result reply = Request(kPage);
    ASSERT_TRUE(reply);
    EXPECT_FALSE(reply->has_header("Content-Length"));
    EXPECT_FALSE(reply->has_header("Transfer-Encoding"));
    EXPECT_EQ(reply->body, good);
}

TEST_F(Misbehave, Times) {
    auto start = std::chrono::steady_clock::now();
    Next("mode=slow&ms=300");
    EXPECT_EQ(Body(kPage), good);
    EXPECT_GE(Since(start).count(), 300);
    Next("mode=dribble&ms=0");
    EXPECT_EQ(Body(kPage), good);

    // Never means until a reset; all else goes on meanwhile.
    Next("mode=never&count=40");
    std::vector<std::thread> waiting;
    std::atomic<int> refused{0};
    for (int i = 0; i < 5; ++i) {
        waiting.emplace_back([this, &refused] {
            const httplib::Result reply = Request(kPage);
            refused += reply && reply->status == 503 ? 1 : 0;
        });
    }
    while (Body("/test/count") != "8\n") std::this_thread::yield();
    EXPECT_EQ(refused, 0);
    EXPECT_EQ(Body("/test/reset"), "ok\n");
    for (std::thread& thread : waiting) thread.join();
    EXPECT_EQ(refused, 5);
}

TEST_F(Misbehave, StoppingEndsWhatWaits) {
    Next("mode=never");
    std::thread waiting([this] { Request(kPage); });
    while (Body("/test/count") != "2\n") std::this_thread::yield();
    const auto start = std::chrono::steady_clock::now();
    Running().Stop();
    EXPECT_LT(Since(start).count(), 8000);
    waiting.join();
}

TEST_F(Misbehave, TellsWhatWasAsked) {
    Body("/test/reset");
    EXPECT_EQ(Body("/test/count"), "0\n");
    EXPECT_EQ(Body("/test/last"), "");
    Body("/xmlservice/SearchForAddress.aspx?datakey=A%20B&postcode=PE13+9AN&COM=1");
    Body("/XMLService/GetLookups.aspx?datatype=1");
    EXPECT_EQ(Body("/test/count"), "2\n");
    EXPECT_EQ(Body("/test/last"), "/XMLService/GetLookups.aspx?datatype=1\n");
    EXPECT_EQ(Body("/test/requests"), "/xmlservice/SearchForAddress.aspx?datakey=A%20B&postcode=PE13+9AN&COM=1\n"
                                      "/XMLService/GetLookups.aspx?datatype=1\n");
    for (const char* bad : {"/test/next?mode=nonsense", "/test/next", "/test/next?mode=slow&ms=x",
                            "/test/next?mode=slow&count=-1", "/test/other"}) {
        EXPECT_EQ(Request(bad)->status, 400) << bad;
    }
}

} // namespace
} // namespace quorvex::service
