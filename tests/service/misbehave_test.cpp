#include "fixture.h"

#include <chrono>
#include <thread>

namespace quorvex::service {
namespace {

constexpr char kPage[] = "/xmlservice/SearchForAddress.aspx?datakey=K&postcode=PE13 9AN&COM=1";
constexpr char kLists[] = "/XMLService/GetLookups.aspx?datatype=1";

class Misbehave : public ServiceTest {
  protected:
    Misbehave() {
        options.test = true;
        Begin();
        good = Body(kPage);
    }

    void Next(const std::string& query) { EXPECT_EQ(Body("/test/next?" + query), "ok\n"); }
    std::string good;
};

TEST_F(Misbehave, OnSomePagesAndForSomeAnswers) {
    Next("mode=error&count=2");
    EXPECT_EQ(Request(kPage)->status, 500);
    EXPECT_EQ(Request(kPage)->status, 500);
    EXPECT_EQ(Body(kPage), good);
    Next("mode=empty&count=0&page=GetLookups");
    EXPECT_EQ(Body(kPage), good);
    EXPECT_EQ(Body(kLists), "");
    EXPECT_EQ(Body(kLists), "");
    EXPECT_EQ(Body("/test/reset"), "ok\n");
    EXPECT_NE(Body(kLists), "");

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
    EXPECT_FALSE(reply->has_header("Content-Length") || reply->has_header("Transfer-Encoding"));
    EXPECT_EQ(reply->body, good);
    Next("mode=dribble&ms=0");
    EXPECT_EQ(Body(kPage), good);
    Next("mode=slow&ms=300");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Body(kPage), good);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
}

// Never means until a reset or the end of the service; all else goes on meanwhile.
TEST_F(Misbehave, Never) {
    for (const bool stop : {false, true}) {
        EXPECT_EQ(Body("/test/reset"), "ok\n");
        Next("mode=never&count=5");
        std::vector<std::thread> waiting;
        std::atomic<int> refused{0};
        for (int i = 0; i < 5; ++i) {
            waiting.emplace_back([this, &refused] {
                const httplib::Result reply = Request(kPage);
                refused += reply && reply->status == 503 ? 1 : 0;
            });
        }
        while (Body("/test/count") != "5\n") std::this_thread::yield();
        EXPECT_EQ(refused, 0);
        if (stop) {
            Running().Stop();
        } else {
            EXPECT_EQ(Body("/test/reset"), "ok\n");
        }
        for (std::thread& thread : waiting) thread.join();
        EXPECT_EQ(refused, 5);
    }
}

TEST_F(Misbehave, TellsWhatWasAsked) {
    Body("/test/reset");
    EXPECT_EQ(Body("/test/last"), "");
    Body("/xmlservice/SearchForAddress.aspx?datakey=A%20B&postcode=PE13+9AN&COM=1");
    Body(kLists);
    EXPECT_EQ(Body("/test/count"), "2\n");
    EXPECT_EQ(Body("/test/last"), std::string(kLists) + "\n");
    EXPECT_EQ(Body("/test/requests"),
              "/xmlservice/SearchForAddress.aspx?datakey=A%20B&postcode=PE13+9AN&COM=1\n" + std::string(kLists) + "\n");
    for (const char* bad : {"/test/next?mode=nonsense", "/test/next", "/test/next?mode=slow&ms=x",
                            "/test/next?mode=slow&count=-1", "/test/other"}) {
        EXPECT_EQ(Request(bad)->status, 400) << bad;
    }
}

} // namespace
} // namespace quorvex::service
