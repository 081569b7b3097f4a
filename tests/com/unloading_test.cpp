// The DLL may go as long as no object was made, and stays from then on.
#include "com/host.h"

#include <psapi.h>

#include <algorithm>

namespace quorvex::testing {
namespace {

// No object of the fixture's here: the DLL's count is what is looked at.
class UnloadingTest : public ::testing::Test {
  protected:
    UnloadingTest() { EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK); }
    ~UnloadingTest() override { CoUninitialize(); }

    const LoadedDll dll_;
};

// Once it was used its threads, unwinding and run-time library stay valid until the process ends.
TEST_F(UnloadingTest, TheFirstObjectKeepsTheDllForGood) {
    { const Ptr<_Quorvex> object = dll_.Create(); }
    EXPECT_EQ(dll_.CanUnload(), S_FALSE);
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_NE(GetModuleHandleW(L"QuorvexLookup.dll"), nullptr);
}

// What services and worker threads do for every job: enter COM, create, call, release, leave COM. No other apartment
// keeps COM alive meanwhile, so each round would load the DLL anew if it went.
TEST(Unloading, ManyRoundsOfComLeaveNothingBehind) {
    const auto round = [] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        {
            const Ptr<_Quorvex> object = CreateRegistered();
            ASSERT_NE(object, nullptr);
            object->put_ServerURL(Text(L"ftp://nobody")); // an exception inside each round
            VARIANT_BOOL found = VARIANT_FALSE;
            object->GetFullAddressToList(Text(L"AB1 0DF").Ref(), &found);
            Text value;
            object->FormatPostCode(Text(L"AB13CD"), value.Out());
            EXPECT_EQ(value.Str(), L"AB1 3CD");
        }
        CoUninitialize();
    };
    const auto freeIndex = [] {
        const DWORD index = TlsAlloc();
        TlsFree(index);
        return index;
    };
    const auto privateBytes = [] {
        PROCESS_MEMORY_COUNTERS_EX counters{};
        GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                             sizeof counters);
        return std::max(counters.PrivateUsage, counters.WorkingSetSize);
    };
    const auto freeHandle = [] {
        const HANDLE handle = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        CloseHandle(handle);
        return reinterpret_cast<ULONG_PTR>(handle);
    };
    for (int i = 0; i < 200; ++i) round();
    const DWORD index = freeIndex();
    const SIZE_T bytes = privateBytes();
    const ULONG_PTR handle = freeHandle();
    constexpr int kRounds = 1200; // more than there are TLS indexes in a process
    for (int i = 0; i < kRounds && !::testing::Test::HasFailure(); ++i) round();
    EXPECT_EQ(freeIndex(), index);
    EXPECT_LE(freeHandle(), handle + 64);
    EXPECT_LT(privateBytes(), bytes + (1U << 20U));
}

TEST_F(UnloadingTest, TheFactoryRefusesWhatItCannotMake) {
    const Ptr<IClassFactory> factory = dll_.Factory();
    void* object = &object;
    EXPECT_EQ(factory->CreateInstance(factory.get(), IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IStream, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    const auto get = reinterpret_cast<HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**)>(
        reinterpret_cast<void*>(GetProcAddress(dll_.Module(), "DllGetClassObject")));
    EXPECT_EQ(get(IID_IStream, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(get(CLSID_Quorvex, IID_IClassFactory, nullptr), E_POINTER);
}

} // namespace
} // namespace quorvex::testing
