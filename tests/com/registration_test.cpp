// Registering and its undoing, and use without it.
#include "com/host.h"

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

using Dump = std::set<std::wstring>;

// The keys that hold other classes' keys: their children are looked at by name only, which is where a new one would
// show.
bool IsContainer(const std::wstring& name) {
    static const std::set<std::wstring> kContainers = {L"CLSID", L"Interface", L"TypeLib", L"AppID", L"WOW6432Node"};
    return kContainers.contains(name);
}

bool IsOwn(const std::wstring& path) {
    return path.find(L"Quorvex") != std::wstring::npos || path.find(L"{1D6679CA-") != std::wstring::npos ||
           path.find(L"{A8C4E3FB-") != std::wstring::npos || path.find(L"{D02A196F-") != std::wstring::npos;
}

// The keys below a key, and all that stands in those of the component, one text each.
void Collect(HKEY key, const std::wstring& path, Dump& dump) {
    std::array<wchar_t, 16384> name;
    std::array<BYTE, 16384> data;
    for (DWORD i = 0;; ++i) {
        DWORD length = static_cast<DWORD>(name.size()), bytes = static_cast<DWORD>(data.size()), type = 0;
        const LONG result = RegEnumValueW(key, i, name.data(), &length, nullptr, &type, data.data(), &bytes);
        if (result == ERROR_NO_MORE_ITEMS) break;
        dump.insert(path + L"|" + name.data() + L"=" + std::to_wstring(result) +
                    std::wstring(data.data(), data.data() + bytes));
    }
    for (DWORD i = 0;; ++i) {
        DWORD length = static_cast<DWORD>(name.size());
        if (RegEnumKeyExW(key, i, name.data(), &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        const std::wstring child = path + L"\\" + std::wstring(name.data(), length);
        dump.insert(child);
        if (!IsOwn(child) && !IsContainer(name.data())) continue;
        HKEY opened = nullptr;
        if (RegOpenKeyExW(key, name.data(), 0, KEY_READ, &opened) != ERROR_SUCCESS) continue;
        Collect(opened, child, dump);
        RegCloseKey(opened);
    }
}

Dump Classes(HKEY root) {
    Dump dump;
    for (const REGSAM view : {kOwnView, kOtherView}) {
        HKEY key = nullptr;
        if (RegOpenKeyExW(root, L"Software\\Classes", 0, KEY_READ | view, &key) != ERROR_SUCCESS) continue;
        Collect(key, view == kOwnView ? L"own" : L"other", dump);
        RegCloseKey(key);
    }
    return dump;
}

std::vector<std::wstring> Difference(const Dump& before, const Dump& after) {
    std::vector<std::wstring> difference;
    std::set_symmetric_difference(before.begin(), before.end(), after.begin(), after.end(),
                                  std::back_inserter(difference));
    return difference;
}

std::wstring Read(HKEY root, const std::wstring& key, const wchar_t* name = nullptr) {
    std::array<wchar_t, 4096> text{};
    DWORD bytes = sizeof text;
    const LONG result = RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text.data(), &bytes);
    return result == ERROR_SUCCESS ? text.data() : L"(none)";
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
    const Dump before = Classes(HKEY_LOCAL_MACHINE);
    ASSERT_GT(before.size(), 100U);
    EXPECT_EQ(TryCreate(), REGDB_E_CLASSNOTREG);

    ASSERT_EQ(dll_.Register(true), S_OK);
    ASSERT_EQ(dll_.Register(true), S_OK); // once more is no error
    EXPECT_GT(Difference(before, Classes(HKEY_LOCAL_MACHINE)).size(), 10U);
    EXPECT_EQ(TryCreate(), S_OK);
    CLSID found;
    EXPECT_EQ(CLSIDFromProgID(L"QuorvexLookup.Quorvex", &found), S_OK);
    EXPECT_TRUE(IsEqualCLSID(found, CLSID_Quorvex));
    EXPECT_EQ(Read(HKEY_LOCAL_MACHINE, std::wstring(kClass) + L"\\InprocServer32", L"ThreadingModel"), L"Apartment");
    ITypeLib* library = nullptr;
    EXPECT_EQ(LoadRegTypeLib(LIBID_QuorvexLookup, 2, 4, 0, &library), S_OK);
    if (library != nullptr) library->Release();

    ASSERT_EQ(dll_.Register(false), S_OK);
    EXPECT_EQ(Difference(before, Classes(HKEY_LOCAL_MACHINE)), std::vector<std::wstring>());
    EXPECT_EQ(dll_.Register(false), S_OK); // nor is taking out what is not there
    EXPECT_EQ(TryCreate(), REGDB_E_CLASSNOTREG);
}

TEST_F(RegistrationTest, OneBitnessLeavesTheOtherItsProgId) {
    ASSERT_EQ(dll_.Register(false), S_OK);
    HKEY key = nullptr;
    DWORD disposition = 0;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, kClass, 0, nullptr, 0, KEY_ALL_ACCESS | kOtherView, nullptr, &key,
                              &disposition),
              ERROR_SUCCESS);
    RegCloseKey(key);
    ASSERT_EQ(dll_.Register(true), S_OK);
    ASSERT_EQ(dll_.Register(false), S_OK);
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
    const Dump before = Classes(HKEY_CURRENT_USER);
    ASSERT_EQ(dll_.Install(true, L"user"), S_OK);
    const std::wstring server = Read(HKEY_CURRENT_USER, std::wstring(kClass) + L"\\InprocServer32");
    EXPECT_TRUE(std::filesystem::equivalent(server, DllPath())) << server;
    EXPECT_EQ(Read(HKEY_CURRENT_USER, std::wstring(kClass) + L"\\InprocServer32", L"ThreadingModel"), L"Apartment");
    EXPECT_EQ(Read(HKEY_CURRENT_USER, std::wstring(kClass) + L"\\ProgID"), L"QuorvexLookup.Quorvex");
    EXPECT_EQ(Read(HKEY_CURRENT_USER, std::wstring(kProgId) + L"\\CLSID"), L"{1D6679CA-4011-4747-9EAF-18731D88251A}");
    ASSERT_EQ(dll_.Install(false, L"USER"), S_OK);
    EXPECT_EQ(Difference(before, Classes(HKEY_CURRENT_USER)), std::vector<std::wstring>());
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
