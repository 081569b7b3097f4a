// The DLL may go when nobody uses it, and not before.
#include "com/host.h"
#include "testing/socket_server_win.h"
#include "testing/wait.h"

#include <chrono>

namespace quorvex::testing {
namespace {

// No object of the fixture's here: the DLL's count is what is looked at.
class UnloadingTest : public ::testing::Test {
  protected:
    UnloadingTest() { EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK); }
    ~UnloadingTest() override { CoUninitialize(); }

    const LoadedDll dll_;
};

TEST_F(UnloadingTest, ObjectsFactoriesAndLocksKeepTheDll) {
    EXPECT_EQ(dll_.CanUnload(), S_OK);
    Ptr<_Quorvex> object = dll_.Create();
    EXPECT_EQ(dll_.CanUnload(), S_FALSE);
    Ptr<IDispatch> second;
    {
        IDispatch* view = nullptr;
        ASSERT_EQ(object->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&view)), S_OK);
        second.reset(view);
    }
    object.reset();
    EXPECT_EQ(dll_.CanUnload(), S_FALSE);
    second.reset();
    EXPECT_EQ(dll_.CanUnload(), S_OK);

    Ptr<IClassFactory> factory = dll_.Factory();
    EXPECT_EQ(dll_.CanUnload(), S_FALSE);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    factory.reset();
    EXPECT_EQ(dll_.CanUnload(), S_FALSE);
    factory = dll_.Factory();
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    factory.reset();
    EXPECT_EQ(dll_.CanUnload(), S_OK);
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

TEST_F(UnloadingTest, ARequestThatWindsDownKeepsTheDll) {
    std::atomic<bool> asked{false};
    std::atomic<bool> hangUp{false};
    const SocketServer server([&](Connection& connection, const std::string&) {
        asked = true;
        WaitUntil([&] { return hangUp.load(); });
        connection.Close();
    });
    {
        const Ptr<_Quorvex> object = dll_.Create();
        const DWORD thread = GetCurrentThreadId();
        std::thread impatient([&] { // a host that ends its message loop gives the request up
            WaitUntil([&] { return asked.load(); });
            PostThreadMessageW(thread, WM_QUIT, 0, 0);
        });
        Text reply;
        EXPECT_EQ(object->GetDataFromHTTPRequest(Text(server.Url(L"/")).Ref(), reply.Out()), S_OK);
        EXPECT_NE(reply.Str().find(L"timed out"), std::wstring::npos);
        impatient.join();
        MSG message;
        EXPECT_NE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE), FALSE); // the host still sees it
    }
    EXPECT_EQ(dll_.CanUnload(), S_FALSE);
    hangUp = true;
    EXPECT_TRUE(WaitUntil([this] { return dll_.CanUnload() == S_OK; }, std::chrono::seconds(20)));
}

TEST_F(UnloadingTest, TheSystemUnloadsTheDllAfterTheLastObject) {
    { const Ptr<_Quorvex> object = CreateRegistered(); }
    EXPECT_EQ(dll_.CanUnload(), S_OK);
    CoFreeUnusedLibrariesEx(0, 0);
    const Ptr<_Quorvex> again = CreateRegistered();
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(Call(again.get(), L"FormatPostCode", {L"AB13CD"}).result.Str(), L"AB1 3CD");
}

} // namespace
} // namespace quorvex::testing
