// The component is a guest in its host's process: it changes nothing there, leaks nothing, and bears being called back.
#include "com/host.h"
#include "support/text.h"
#include "testing/after_win.h"
#include "testing/socket_server_win.h"

#include <psapi.h>

#include <atomic>
#include <cfloat>
#include <clocale>
#include <cstring>
#include <map>
#include <thread>
#include <vector>
#include <xmmintrin.h>

namespace quorvex::testing {
namespace {

using GuestTest = ComTest;

std::map<std::string, std::wstring> ProcessState() {
    std::map<std::string, std::wstring> state;
    const auto set = [&state](const char* name, auto number) { state[name] = std::to_wstring(number); };
    const char* const locale = std::setlocale(LC_ALL, nullptr);
    state["C locale"] = std::wstring(locale, locale + std::strlen(locale));
    set("thread locale", GetThreadLocale());
    set("interface language", GetThreadUILanguage());
    set("error mode", GetErrorMode());
    set("priority", GetThreadPriority(GetCurrentThread()));
    set("code page", GetConsoleOutputCP());
    set("floating point", _controlfp(0, 0));
    state["current directory"] = std::filesystem::current_path().wstring();
    std::array<wchar_t, 4096> text{};
    GetDllDirectoryW(static_cast<DWORD>(text.size()), text.data());
    state["DLL directory"] = text.data();
    GetEnvironmentVariableW(L"PATH", text.data(), static_cast<DWORD>(text.size()));
    state["path"] = text.data();
    const HMODULE user = GetModuleHandleW(L"user32.dll");
    using Context = HANDLE(WINAPI*)();
    using Awareness = int(WINAPI*)(HANDLE);
    const auto context =
        reinterpret_cast<Context>(reinterpret_cast<void*>(GetProcAddress(user, "GetThreadDpiAwarenessContext")));
    const auto awareness = reinterpret_cast<Awareness>(
        reinterpret_cast<void*>(GetProcAddress(user, "GetAwarenessFromDpiAwarenessContext")));
    if (context != nullptr && awareness != nullptr) set("DPI awareness", awareness(context()));
    set("priority class", GetPriorityClass(GetCurrentProcess()));
    return state;
}

// What a host does in a day: lookups in both modes, a nearest list, tags, settings.
void Session(_Quorvex* object, const std::wstring& dataFolder, BSTR* lastLine) {
    VARIANT_BOOL found = VARIANT_FALSE;
    object->SetDataKey(Text(L"ikey").Ref());
    object->GetFullAddressToList(Text(L"AB1 0DF").Ref(), &found); // web mode: nobody answers
    object->LMSetDataPath(Text(dataFolder).Ref());
    ASSERT_EQ(object->GetFullAddressToList(Text(L"AB1 0DF").Ref(), &found), S_OK);
    ASSERT_EQ(found, VARIANT_TRUE);
    object->GetFullAddressLineForSelection(lastLine);
    long first = 0;
    object->GetFullAddressRecord(&first, &found);
    ASSERT_EQ(found, VARIANT_TRUE);
    object->GetThoroughfareAddressRecord(Text(L"AB1 0DF").Ref(), &found);
    ASSERT_EQ(found, VARIANT_TRUE);
    double km = 10, longitude = 0, latitude = 0, box = 0;
    object->Nearest_StartList(Text(L"AB1 0DF").Ref(), &km, &longitude, &latitude, &box, &found);
    ASSERT_EQ(found, VARIANT_TRUE);
    object->Nearest_AddToList(&longitude, &latitude, Text(L"a").Ref(), Text(L"b").Ref(), Text(L"c").Ref(), &found);
    long count = 0;
    object->Nearest_GetNumberOfRecordsReturned(&count);
    ASSERT_EQ(count, 1);
    object->Nearest_EndList();
    object->LMSetDataPath(Text(L"").Ref());
}

TEST_F(GuestTest, TheHostsSurroundingsStayAsTheyWere) {
    std::setlocale(LC_ALL, "C");
    SetThreadLocale(MAKELCID(MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN), SORT_DEFAULT));
    _controlfp(_RC_UP, _MCW_RC); // an odd setting of the host's own
    const auto before = ProcessState();
    Text line;
    Session(object_.get(), SampleFolder(), line.Out());
    const auto after = ProcessState();
    _controlfp(_RC_NEAR, _MCW_RC);
    EXPECT_EQ(after, before);
    EXPECT_FALSE(line.Str().empty());
}

// Kilometres from AB1 0DF to points 0.02, 0.05 and 0.1 degrees north of it, as texts of two decimals.
std::vector<std::wstring> NearestDistances(_Quorvex* object) {
    double within = 50, longitude = 0, latitude = 0, box = 0;
    VARIANT_BOOL found = VARIANT_FALSE;
    object->Nearest_StartList(Text(L"AB1 0DF").Ref(), &within, &longitude, &latitude, &box, &found);
    for (const double degrees : {0.1, 0.02, 0.05}) {
        double north = latitude + degrees;
        object->Nearest_AddToList(&longitude, &north, Text(L"").Ref(), Text(L"").Ref(), Text(L"").Ref(), &found);
    }
    long count = 0;
    object->Nearest_GetNumberOfRecordsReturned(&count);
    std::vector<std::wstring> distances;
    for (long x = 1; x <= count; ++x) {
        double km = 0;
        object->Nearest_GetRecord(&x, &km, &longitude, &latitude, Text(L"").Ref(), Text(L"").Ref(), Text(L"").Ref(),
                                  &found);
        distances.push_back(support::NumberText(km));
    }
    object->Nearest_EndList();
    return distances;
}

TEST_F(GuestTest, NumbersAreTheSameUnderEveryFloatingPointSettingAndLocale) {
    UseSample(object_.get());
    const auto distance = [&] {
        double lat1 = 57.181792, long1 = -2.133233, lat2 = 51.5, long2 = 0.1, km = 0;
        EXPECT_EQ(object_->GetDistance(&lat1, &long1, &lat2, &long2, &km), S_OK);
        return km;
    };
    const auto point = [&] {
        Text postcode;
        EXPECT_EQ(object_->GetPostZonAddressLongLat(-2.133233, 57.181792, nullptr, postcode.Out()), S_OK);
        return postcode.Str();
    };
    const double expected = distance();
    EXPECT_EQ(point(), L"AB1 0DF");
#ifndef _WIN64
    for (const unsigned precision : {static_cast<unsigned>(_PC_24), static_cast<unsigned>(_PC_53)}) {
        const unsigned before = _controlfp(0, 0);
        _controlfp(precision, _MCW_PC); // what graphics libraries leave behind
        EXPECT_NEAR(distance(), expected, 1e-6) << precision;
        EXPECT_EQ(point(), L"AB1 0DF") << precision;
        _controlfp(before, _MCW_PC);
    }
#endif
    SetThreadLocale(MAKELCID(MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN), SORT_DEFAULT)); // decimal comma
    EXPECT_EQ(distance(), expected);
    EXPECT_EQ(point(), L"AB1 0DF");
    // Host and component share the C library, and with it the locale.
    ASSERT_NE(std::setlocale(LC_ALL, "German"), nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(point(), L"AB1 0DF");
    EXPECT_EQ(NearestDistances(object_.get()), (std::vector<std::wstring>{L"2.22", L"5.56", L"11.11"}));
    std::setlocale(LC_ALL, "C");
    SetThreadLocale(LOCALE_USER_DEFAULT);
}

// Both units' control words and status flags.
struct Arithmetic {
    unsigned short x87Control = 0;
    unsigned short x87Status = 0;
    unsigned sse = 0;
    bool operator==(const Arithmetic&) const = default;
};

Arithmetic CurrentArithmetic() {
    Arithmetic now;
    __asm__ __volatile__("fnstcw %0\n\tfnstsw %1" : "=m"(now.x87Control), "=m"(now.x87Status));
    now.sse = _mm_getcsr();
    return now;
}

// Delphi switches the exceptions on; whatever we compute must neither raise one nor leave a flag that raises one later.
TEST_F(GuestTest, AHostWithFloatingPointExceptionsOnSurvivesExtremeValues) {
    UseSample(object_.get());
    const unsigned short before = CurrentArithmetic().x87Control;
    const unsigned sseBefore = _mm_getcsr();
    constexpr unsigned short kAllOn = 0x0340; // extended precision, no exception masked but "inexact" below
    const unsigned short control = kAllOn | 0x20;
    double values[] = {0, 1e308, -1e308, 1e-320, 90, 51.5};
    double km = 0;
    HRESULT results = S_OK;
    __asm__ __volatile__("fnclex\n\tfldcw %0" : : "m"(control));
    _mm_setcsr(0x1000 | 0x20); // the same in SSE; the host's own "inexact" flag stands
    const Arithmetic set = CurrentArithmetic();
    for (double& first : values) {
        for (double& second : values) results |= object_->GetDistance(&first, &second, &second, &first, &km);
    }
    BSTR postcode = nullptr;
    results |= object_->GetPostZonAddressLongLat(1e308, -1e308, nullptr, &postcode);
    const Arithmetic left = CurrentArithmetic();
    __asm__ __volatile__("fnclex\n\tfldcw %0" : : "m"(before));
    _mm_setcsr(sseBefore);
    SysFreeString(postcode);
    EXPECT_EQ(results, S_OK);
    EXPECT_TRUE(left == set) << std::hex << left.x87Control << " " << left.x87Status << " " << left.sse
                             << " instead of " << set.x87Control << " " << set.x87Status << " " << set.sse;
}

// A web back end: many apartments, each with an object, all at work.
TEST_F(GuestTest, SixteenApartmentsAreServedSideBySideInBothModes) {
    const SocketServer server([](Connection& connection, const std::string&) {
        Sleep(20);
        connection.Reply("<confirm>Yes</confirm><recordcount>7</recordcount>");
    });
    const std::wstring sample = SampleFolder();
    for (const bool local : {false, true}) {
        std::atomic<int> found{0};
        std::atomic<int> answered{0};
        const auto work = [&](int apartment) {
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            {
                const Ptr<_Quorvex> object = CreateRegistered();
                object->put_ServerURL(Text(server.Url(L"")));
                if (local) object->LMSetDataPath(Text(sample).Ref());
                for (int n = 0; n < 25; ++n) {
                    VARIANT_BOOL result = VARIANT_FALSE;
                    object->GetFullAddressToList(Text(L"AB1 0DF").Ref(), &result);
                    found += result != VARIANT_FALSE;
                    Text reply;
                    if (!local) {
                        const std::wstring target = L"/" + std::to_wstring(apartment);
                        object->GetDataFromHTTPRequest(Text(server.Url(target)).Ref(), reply.Out());
                        answered += reply.Str().starts_with(L"<confirm>");
                    } else {
                        object->LMSetDataPath(Text(sample).Ref()); // the text that all apartments share
                    }
                }
            }
            CoUninitialize();
        };
        std::vector<std::thread> apartments;
        for (int i = 0; i < 16; ++i) apartments.emplace_back(work, i);
        for (std::thread& apartment : apartments) apartment.join();
        EXPECT_EQ(found, 16 * 25) << (local ? "local" : "web");
        EXPECT_EQ(answered, local ? 0 : 16 * 25);
    }
}

TEST_F(GuestTest, TwoObjectsKeepTheirSettingsApart) {
    const Ptr<_Quorvex> other = CreateRegistered();
    ASSERT_EQ(other->put_ServerURL(Text(L"http://127.0.0.1:1")), S_OK);
    UseSample(object_.get());
    const auto found = [](const Ptr<_Quorvex>& object) {
        return Call(object.get(), L"GetFullAddressToList", {L"AB1 0DF"}).result.boolVal != VARIANT_FALSE;
    };
    const auto line = [](const Ptr<_Quorvex>& object) {
        return Call(object.get(), L"GetFullAddressLineForSelection", {}).result.Str();
    };
    EXPECT_TRUE(found(object_));
    EXPECT_FALSE(found(other)); // in web mode, where nobody answers
    EXPECT_NE(Get(other.get(), L"General_errormessage").result.Str().find(L"timed out"), std::wstring::npos);
    EXPECT_NE(line(object_), L"");
    EXPECT_EQ(line(other), L"");
}

TEST_F(GuestTest, TheHostMayCallBackWhileARequestWaits) {
    const SocketServer server([](Connection& connection, const std::string&) {
        Sleep(400);
        connection.Reply("<confirm>Yes</confirm><recordcount>7</recordcount>");
    });
    object_->put_ServerURL(Text(server.Url(L"")));
    const Ptr<_Quorvex> other = CreateRegistered();
    Text formatted, second(L"untouched");
    const After callBack(100, [&] {
        object_->FormatPostCode(Text(L"AB13CD"), formatted.Out());
        other->GetDataFromHTTPRequest(Text(server.Url(L"/second")).Ref(), second.Out());
    });
    const Outcome found = Call(object_.get(), L"GetFullAddressToList", {L"AB1 0DF"});
    EXPECT_TRUE(callBack.Fired());
    EXPECT_EQ(formatted.Str(), L"AB1 3CD");
    EXPECT_EQ(second.Str(), L""); // a thread has one request at a time
    EXPECT_EQ(found.result.boolVal, VARIANT_TRUE);
    EXPECT_EQ(Get(object_.get(), L"RecordCount").result.lVal, 7);
    EXPECT_EQ(server.Heads().size(), 1U);
}

TEST_F(GuestTest, AnObjectReleasedDuringItsOwnRequestLivesToTheEndOfIt) {
    const SocketServer server([](Connection& connection, const std::string&) {
        Sleep(400);
        connection.Reply("late");
    });
    _Quorvex* const object = object_.get();
    const After release(100, [&] { object_.reset(); });
    Text result;
    ASSERT_EQ(object->GetDataFromHTTPRequest(Text(server.Url(L"/")).Ref(), result.Out()), S_OK);
    EXPECT_EQ(object_, nullptr);
    EXPECT_EQ(result.Str(), L"late");
    object_ = CreateRegistered();
}

struct Consumption {
    ULONG_PTR handles = 0;
    SIZE_T bytes = 0;
};

// Handles are counted by the numbers that new ones get: free numbers are given out again first, and not every system
// tells their count.
Consumption Now() {
    Consumption now;
    std::array<HANDLE, 64> probes;
    for (HANDLE& probe : probes) {
        probe = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        now.handles = std::max(now.handles, reinterpret_cast<ULONG_PTR>(probe) / 4);
    }
    for (HANDLE probe : probes) CloseHandle(probe);
    PROCESS_MEMORY_COUNTERS_EX counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters), sizeof counters);
    now.bytes = std::max(counters.PrivateUsage, counters.WorkingSetSize);
    return now;
}

TEST_F(GuestTest, TenThousandObjectsLeaveNothingBehind) {
    const auto round = [&] {
        const Ptr<_Quorvex> object = CreateRegistered();
        Text value, html(L"<a>1</a><a>2</a>");
        object->put_Extra1(Text(L"some text that is too long to be kept inside a string object"));
        object->FormatPostCode(Text(L"AB13CD"), value.Out());
        short consume = 1;
        object->GetBetweenTags(Text(L"<a>").Ref(), html.Ref(), Text(L"</a>").Ref(), &consume, nullptr, value.Out());
        Value variable(L"<a>1</a><a>2</a>");
        Call(object.get(), L"GetBetweenTags", {L"<a>", Value::Ref(variable), L"</a>", 1L});
        Call(object.get(), L"GetBetweenTags", {L"<a>", Value::Ref(variable), L"</a>", L"no number"});
        Put(object.get(), L"Extra2", L"text");
        Get(object.get(), L"Extra2");
    };
    for (int i = 0; i < 1000; ++i) round();
    const Consumption before = Now();
    for (int i = 0; i < 10000; ++i) round();
    const Consumption after = Now();
    ASSERT_GT(before.bytes, 0U);
    EXPECT_LE(after.handles, before.handles + 5);
    EXPECT_LE(after.bytes, before.bytes + 1024 * 1024); // a hundred bytes a round
}

TEST_F(GuestTest, LookupsLeaveNothingBehind) {
    const std::wstring folder = SampleFolder();
    const auto round = [&] {
        const Ptr<_Quorvex> object = CreateRegistered();
        object->put_ServerURL(Text(L"http://127.0.0.1:1"));
        Text line;
        Session(object.get(), folder, line.Out());
    };
    for (int i = 0; i < 20; ++i) round();
    const Consumption before = Now();
    for (int i = 0; i < 100; ++i) round();
    const Consumption after = Now();
    EXPECT_LE(after.handles, before.handles + 10);
    EXPECT_LE(after.bytes, before.bytes + 2 * 1024 * 1024);
}

} // namespace
} // namespace quorvex::testing
