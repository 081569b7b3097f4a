// Registering and its undoing, and use without it.
#include "com/host.h"
#include "support/files.h"

#include <array>
#include <fstream>
#include <set>

namespace quorvex::testing {
namespace {

constexpr wchar_t kProgId[] = L"Software\\Classes\\QuorvexLookup.Quorvex";
constexpr wchar_t kClass[] = L"Software\\Classes\\CLSID\\{1D6679CA-4011-4747-9EAF-18731D88251A}";
#ifdef _WIN64
constexpr REGSAM kOwnView = KEY_WOW64_64KEY;
constexpr REGSAM kOtherView = KEY_WOW64_32KEY;
#else
constexpr REGSAM kOwnView = KEY_WOW64_32KEY;
constexpr REGSAM kOtherView = KEY_WOW64_64KEY;
#endif

// All classes of a root in both views, as the registry editor exports them.
std::string Classes(const wchar_t* root) {
    const TempFolder folder;
    std::string all;
    for (const wchar_t* view : {L"/reg:64", L"/reg:32"}) {
        const std::wstring file = folder.File(L"classes.reg");
        const std::wstring command =
            L"reg export " + std::wstring(root) + L"\\Software\\Classes \"" + file + L"\" /y " + view + L" >nul";
        EXPECT_EQ(_wsystem(command.c_str()), 0);
        all += support::ReadFileBytes(file);
    }
    return all;
}

std::wstring Read(HKEY root, const std::wstring& key, const wchar_t* name = nullptr) {
    std::array<wchar_t, 4096> text{};
    DWORD bytes = sizeof text;
    const LONG result = RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text.data(), &bytes);
    return result == ERROR_SUCCESS ? text.data() : L"(none)";
}

// The views that hold the interface with its marshaller.
std::vector<std::wstring> InterfaceViews() {
    std::vector<std::wstring> found;
    for (const REGSAM view : {kOwnView, kOtherView}) {
        HKEY key = nullptr;
        const wchar_t* const path =
            L"Software\\Classes\\Interface\\{A8C4E3FB-2C88-469E-857B-24E69D0A8265}\\ProxyStubClsid32";
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ | view, &key) != ERROR_SUCCESS) continue;
        found.push_back(view == kOwnView ? L"own" : L"other");
        RegCloseKey(key);
    }
    return found;
}

HRESULT TryCreate() {
    IUnknown* object = nullptr;
    const HRESULT hr =
        CoCreateInstance(CLSID_Quorvex, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, reinterpret_cast<void**>(&object));
    if (SUCCEEDED(hr)) object->Release();
    return hr;
}

class RegistrationTest : public ::testing::Test {
  protected:
    RegistrationTest() { EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK); }
    ~RegistrationTest() override {
        EXPECT_EQ(dll_.Register(true), S_OK); // as the other tests want it
        CoUninitialize();
    }

    const LoadedDll dll_;
};

TEST_F(RegistrationTest, TheMachinesRegistrationComesAndGoesWithoutATrace) {
    ASSERT_EQ(dll_.Register(false), S_OK);
    const std::string before = Classes(L"HKLM");
    ASSERT_GT(before.size(), 10000U);
    EXPECT_EQ(TryCreate(), REGDB_E_CLASSNOTREG);

    ASSERT_EQ(dll_.Register(true), S_OK);
    ASSERT_EQ(dll_.Register(true), S_OK); // once more is no error
    EXPECT_GT(Classes(L"HKLM").size(), before.size() + 1000);
    EXPECT_EQ(TryCreate(), S_OK);
    CLSID found;
    EXPECT_EQ(CLSIDFromProgID(L"QuorvexLookup.Quorvex", &found), S_OK);
    EXPECT_TRUE(IsEqualCLSID(found, CLSID_Quorvex));
    EXPECT_EQ(Read(HKEY_LOCAL_MACHINE, std::wstring(kClass) + L"\\InprocServer32", L"ThreadingModel"), L"Apartment");
    ITypeLib* library = nullptr;
    EXPECT_EQ(LoadRegTypeLib(LIBID_QuorvexLookup, 2, 4, 0, &library), S_OK);
    if (library != nullptr) library->Release();

    ASSERT_EQ(dll_.Register(false), S_OK);
    EXPECT_TRUE(Classes(L"HKLM") == before) << "something is left behind";
    EXPECT_EQ(dll_.Register(false), S_OK); // nor is taking out what is not there
    EXPECT_EQ(TryCreate(), REGDB_E_CLASSNOTREG);
}

TEST_F(RegistrationTest, OneBitnessLeavesTheOtherItsKeys) {
    ASSERT_EQ(dll_.Register(false), S_OK);
    HKEY key = nullptr;
    DWORD disposition = 0;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, kClass, 0, nullptr, 0, KEY_ALL_ACCESS | kOtherView, nullptr, &key,
                              &disposition),
              ERROR_SUCCESS);
    RegCloseKey(key);
    ASSERT_EQ(dll_.Register(true), S_OK);
    const std::wstring library = L"Software\\Classes\\TypeLib\\{D02A196F-8E0E-4C70-AB95-338B63123311}\\2.4\\0\\" +
                                 std::wstring(sizeof(void*) == 8 ? L"win32" : L"win64");
    ASSERT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, library.c_str(), nullptr, REG_SZ, L"other.dll", 20), ERROR_SUCCESS);
    const std::vector<std::wstring> interfaces = InterfaceViews();
    EXPECT_FALSE(interfaces.empty());
    ASSERT_EQ(dll_.Register(false), S_OK);
    EXPECT_EQ(Read(HKEY_LOCAL_MACHINE, library), L"other.dll");
    EXPECT_EQ(InterfaceViews(), interfaces);
    EXPECT_EQ(Read(HKEY_LOCAL_MACHINE, std::wstring(kProgId) + L"\\CLSID"), L"{1D6679CA-4011-4747-9EAF-18731D88251A}");
    if (disposition != REG_CREATED_NEW_KEY) return; // the other one is really there
    ASSERT_EQ(RegDeleteKeyExW(HKEY_LOCAL_MACHINE, kClass, kOtherView, 0), ERROR_SUCCESS);
    ASSERT_EQ(dll_.Register(false), S_OK);
    EXPECT_EQ(Read(HKEY_LOCAL_MACHINE, std::wstring(kProgId) + L"\\CLSID"), L"(none)");
}

TEST_F(RegistrationTest, OneUsersRegistrationNeedsNoAdministratorsKeys) {
    HKEY classes = nullptr; // the system's own container, which may not be there yet
    RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Classes\\CLSID", 0, nullptr, 0, KEY_READ, nullptr, &classes,
                    nullptr);
    RegCloseKey(classes);
    const std::string before = Classes(L"HKCU");
    ASSERT_EQ(dll_.Install(true, L"user"), S_OK);
    const std::wstring server = Read(HKEY_CURRENT_USER, std::wstring(kClass) + L"\\InprocServer32");
    EXPECT_TRUE(std::filesystem::equivalent(server, DllPath())) << server;
    EXPECT_EQ(Read(HKEY_CURRENT_USER, std::wstring(kClass) + L"\\InprocServer32", L"ThreadingModel"), L"Apartment");
    EXPECT_EQ(Read(HKEY_CURRENT_USER, std::wstring(kClass) + L"\\ProgID"), L"QuorvexLookup.Quorvex");
    EXPECT_EQ(Read(HKEY_CURRENT_USER, std::wstring(kProgId) + L"\\CLSID"), L"{1D6679CA-4011-4747-9EAF-18731D88251A}");
    ASSERT_EQ(dll_.Install(false, L"USER"), S_OK);
    EXPECT_TRUE(Classes(L"HKCU") == before) << "something is left behind";
    EXPECT_EQ(dll_.Install(false, L"user"), S_OK);
    EXPECT_EQ(dll_.Install(true, L"nobody"), E_INVALIDARG);
}

// Activates a manifest for the life of the object.
class Activation {
  public:
    explicit Activation(const std::filesystem::path& manifest) {
        ACTCTXW context{};
        context.cbSize = sizeof context;
        context.lpSource = manifest.c_str();
        handle_ = CreateActCtxW(&context);
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE) << manifest << " error " << GetLastError();
        EXPECT_NE(ActivateActCtx(handle_, &cookie_), FALSE);
    }
    ~Activation() {
        DeactivateActCtx(0, cookie_);
        ReleaseActCtx(handle_);
    }
    Activation(const Activation&) = delete;
    Activation& operator=(const Activation&) = delete;

  private:
    HANDLE handle_;
    ULONG_PTR cookie_ = 0;
};

void UseUnregistered() {
    ASSERT_EQ(TryCreate(), S_OK);
    CLSID found;
    EXPECT_EQ(CLSIDFromProgID(L"QuorvexLookup.Quorvex", &found), S_OK);
    const Ptr<_Quorvex> object = CreateRegistered();
    EXPECT_EQ(Call(object.get(), L"FormatPostCode", {L"AB13CD"}).result.Str(), L"AB1 3CD");
}

TEST_F(RegistrationTest, AManifestStandsInForRegistration) {
    ASSERT_EQ(dll_.Register(false), S_OK);
    ASSERT_EQ(TryCreate(), REGDB_E_CLASSNOTREG);
    {
        const Activation direct(DllPath().parent_path() / L"Quorvex.Lookup.manifest");
        UseUnregistered();
    }
    EXPECT_EQ(TryCreate(), REGDB_E_CLASSNOTREG);
    // As a host names it in a manifest of its own, with the DLL and its manifest in the same folder.
    const TempFolder folder;
    for (const wchar_t* name : {L"QuorvexLookup.dll", L"Quorvex.Lookup.manifest"}) {
        std::filesystem::copy_file(DllPath().parent_path() / name, folder.Path() / name);
    }
    const std::filesystem::path host = folder.Path() / L"host.manifest";
    std::ofstream(host) << R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<assembly xmlns="urn:schemas-microsoft-com:asm.v1" manifestVersion="1.0">
  <assemblyIdentity type="win32" name="host" version="1.0.0.0"/>
  <dependency><dependentAssembly>
    <assemblyIdentity type="win32" name="Quorvex.Lookup" version="2.4.0.0" processorArchitecture="*"/>
  </dependentAssembly></dependency>
</assembly>
)";
    const Activation dependent(host);
    UseUnregistered();
    CoFreeUnusedLibrariesEx(0, 0); // before its folder goes
}

} // namespace
} // namespace quorvex::testing
