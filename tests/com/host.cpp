#include "com/host.h"

#include "testing/sample_data.h"

#include <array>

namespace quorvex::testing {
namespace {

constexpr wchar_t kNowhere[] = L"http://127.0.0.1:1";

template <typename Function>
Function Export(HMODULE module, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

BOOL CALLBACK CloseIfOwn(HWND window, LPARAM closed) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != GetCurrentProcessId() || !IsWindowVisible(window) || !IsWindowEnabled(window)) return TRUE;
    PostMessageW(window, WM_CLOSE, 0, 0);
    ++*reinterpret_cast<std::atomic<int>*>(closed);
    return TRUE;
}

} // namespace

std::filesystem::path DllPath() {
    std::array<wchar_t, 32768> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return std::filesystem::path(path.data()).parent_path().parent_path() / L"QuorvexLookup.dll";
}

LoadedDll::LoadedDll() : module_(LoadLibraryW(DllPath().c_str())) {
    EXPECT_NE(module_, nullptr) << DllPath() << " error " << GetLastError();
}

LoadedDll::~LoadedDll() {
    FreeLibrary(module_);
}

Ptr<IClassFactory> LoadedDll::Factory() const {
    IClassFactory* factory = nullptr;
    const auto get = Export<HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**)>(module_, "DllGetClassObject");
    EXPECT_EQ(get(CLSID_Quorvex, IID_IClassFactory, reinterpret_cast<void**>(&factory)), S_OK);
    return Ptr<IClassFactory>(factory);
}

Ptr<_Quorvex> LoadedDll::Create() const {
    _Quorvex* object = nullptr;
    EXPECT_EQ(Factory()->CreateInstance(nullptr, IID__Quorvex, reinterpret_cast<void**>(&object)), S_OK);
    return Ptr<_Quorvex>(object);
}

HRESULT LoadedDll::CanUnload() const {
    return Export<HRESULT(STDAPICALLTYPE*)()>(module_, "DllCanUnloadNow")();
}

HRESULT LoadedDll::Register(bool on) const {
    return Export<HRESULT(STDAPICALLTYPE*)()>(module_, on ? "DllRegisterServer" : "DllUnregisterServer")();
}

HRESULT LoadedDll::Install(bool on, const wchar_t* commandLine) const {
    return Export<HRESULT(STDAPICALLTYPE*)(BOOL, LPCWSTR)>(module_, "DllInstall")(on ? TRUE : FALSE, commandLine);
}

Ptr<_Quorvex> CreateRegistered() {
    _Quorvex* object = nullptr;
    const HRESULT hr =
        CoCreateInstance(CLSID_Quorvex, nullptr, CLSCTX_INPROC_SERVER, IID__Quorvex, reinterpret_cast<void**>(&object));
    EXPECT_EQ(hr, S_OK) << "the class is not registered; run the tests inside tools/with-wine";
    return Ptr<_Quorvex>(object);
}

ComTest::ComTest() {
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    object_ = CreateRegistered();
    if (object_ == nullptr) std::abort(); // nothing below can run
    EXPECT_EQ(object_->put_ServerURL(Text(kNowhere)), S_OK);
    // The folder of the logs is the process's: without one they would be written to the root of the drive.
    EXPECT_EQ(CreateRegistered()->LMSetDataPath(Text(logs_.Text()).Ref()), S_OK);
}

ComTest::~ComTest() {
    object_.reset();
    CoUninitialize();
}

std::wstring ComTest::SampleFolder() {
    if (sample_ == nullptr) {
        sample_ = std::make_unique<TempFolder>();
        CopySampleData(sample_->Text());
    }
    return sample_->Text();
}

void ComTest::UseSample(_Quorvex* object) {
    EXPECT_EQ(object->LMSetDataPath(Text(SampleFolder()).Ref()), S_OK);
}

WindowCloser::WindowCloser()
    : thread_([this] {
          while (!stop_) {
              EnumWindows(CloseIfOwn, reinterpret_cast<LPARAM>(&closed_));
              Sleep(20);
          }
      }) {}

WindowCloser::~WindowCloser() {
    stop_ = true;
    thread_.join();
}

} // namespace quorvex::testing
