#include "quorvex/doctor.h"

#include "quorvex/dll_check_win.h"
#include "quorvex/registry_win.h"
#include "support/files.h"
#include "support/text.h"

#include <objbase.h>
#include <windows.h>

#include <array>
#include <optional>

// What COM finds of the component in each registry view and hive, and whether it can be used.

namespace quorvex::cli {
namespace {

constexpr wchar_t kProgId[] = L"QuorvexLookup.Quorvex";
constexpr wchar_t kClassId[] = L"{1D6679CA-4011-4747-9EAF-18731D88251A}";
constexpr wchar_t kLibraryId[] = L"{D02A196F-8E0E-4C70-AB95-338B63123311}";
constexpr wchar_t kInterfaceId[] = L"{A8C4E3FB-2C88-469E-857B-24E69D0A8265}";
constexpr wchar_t kMachineAdvice[] = L"run the installer's repair, or regsvr32 from an elevated prompt";
constexpr wchar_t kUserAdvice[] = L"run the per-user setup again, or regsvr32 /n /i:user";

struct ClassPlace {
    bool is64Bit;
    bool user;

    std::wstring Name() const {
        return std::wstring(is64Bit ? L"64-bit" : L"32-bit") + (user ? L", this user" : L", all users");
    }
    RegistryView View() const { return {user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE, is64Bit}; }
    const wchar_t* Advice() const { return user ? kUserAdvice : kMachineAdvice; }
};

bool Is64BitWindows() {
    if constexpr (sizeof(void*) == 8) return true;
    BOOL wow = FALSE;
    return IsWow64Process(GetCurrentProcess(), &wow) && wow;
}

std::wstring ClassKey(const std::wstring& rest) {
    return L"Software\\Classes\\" + rest;
}

class Installation {
  public:
    explicit Installation(Findings& findings) : findings_(findings) {}
    void Examine();

  private:
    void Add(const ClassPlace& place, Grade grade, std::wstring what, std::wstring advice) {
        findings_.push_back({grade, L"component, " + place.Name(), std::move(what), std::move(advice)});
    }
    // The registered DLL; nothing if none is.
    std::optional<std::wstring> ExamineClass(const ClassPlace& place);
    void ExamineProgId(const ClassPlace& place);
    void ExamineLibrary(const ClassPlace& place);
    void ExamineOverride(bool is64Bit, const std::optional<std::wstring>& machine,
                         const std::optional<std::wstring>& user);
    void CreateObject(bool registered);

    Findings& findings_;
};

std::optional<std::wstring> Installation::ExamineClass(const ClassPlace& place) {
    const RegistryView view = place.View();
    const std::wstring key = ClassKey(std::wstring(L"CLSID\\") + kClassId);
    if (!view.HasKey(key)) return std::nullopt;
    const auto dll = view.Text(key + L"\\InprocServer32", nullptr);
    if (!dll) {
        Add(place, Grade::Problem, L"the class is registered without a DLL", place.Advice());
        return std::nullopt;
    }
    if (view.Text(key + L"\\InprocServer32", L"ThreadingModel").value_or(L"") != L"Apartment") {
        Add(place, Grade::Problem, L"the threading model is not \"Apartment\"", place.Advice());
    }
    const DllState state = CheckDll(*dll, place.is64Bit);
    for (const DllFault& fault : state.faults) {
        Add(place, fault.harmless ? Grade::Warning : Grade::Problem, *dll + L": " + fault.what,
            fault.advice.empty() ? place.Advice() : fault.advice);
    }
    if (state.usable) Add(place, Grade::Ok, *dll + L", version " + state.version + L", " + state.signature, {});
    ExamineProgId(place);
    ExamineLibrary(place);
    return dll;
}

void Installation::ExamineProgId(const ClassPlace& place) {
    const std::wstring key = ClassKey(std::wstring(kProgId) + L"\\CLSID");
    auto classId = place.View().Text(key, nullptr);
    // Names are not kept by bitness: what the other view shows holds as well.
    if (!classId) classId = RegistryView{place.View().hive, !place.is64Bit}.Text(key, nullptr);
    if (!classId) {
        Add(place, Grade::Problem, std::wstring(L"the name ") + kProgId + L" is not registered", place.Advice());
    } else if (support::UpperCase(*classId) != kClassId) {
        Add(place, Grade::Problem, std::wstring(L"the name ") + kProgId + L" leads to another class, " + *classId,
            L"uninstall the program that took the name, then repair this one");
    }
}

void Installation::ExamineLibrary(const ClassPlace& place) {
    const RegistryView view = place.View();
    const std::wstring library = ClassKey(std::wstring(L"TypeLib\\") + kLibraryId);
    const wchar_t* const system = place.is64Bit ? L"win64" : L"win32";
    const std::wstring version = LibraryVersion();
    const auto path = view.Text(library + L"\\" + version + L"\\0\\" + system, nullptr);
    if (!path) {
        Add(place, Grade::Problem, L"the type library is not registered for " + std::wstring(system), place.Advice());
    } else if (!support::FileExists(*path)) {
        Add(place, Grade::Problem, L"the type library's file is missing: " + *path, place.Advice());
    }
    const auto marshalled = view.Text(ClassKey(std::wstring(L"Interface\\") + kInterfaceId + L"\\TypeLib"), nullptr);
    if (!marshalled || support::UpperCase(*marshalled) != kLibraryId) {
        Add(place, Grade::Problem, L"the interface _Quorvex is not registered",
            std::wstring(L"calls between apartments fail: ") + place.Advice());
    }
}

void Installation::ExamineOverride(bool is64Bit, const std::optional<std::wstring>& machine,
                                   const std::optional<std::wstring>& user) {
    if (!machine || !user || support::UpperCase(*machine) == support::UpperCase(*user)) return;
    Add({is64Bit, true}, Grade::Warning, L"hides the installation for all users, " + *machine,
        L"elevated programs use that one, others this one; uninstall one of the two");
}

void Installation::CreateObject(bool registered) {
    if (!registered) return;
    CLSID classId;
    if (FAILED(CLSIDFromString(kClassId, &classId)) || FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)))
        return;
    IDispatch* object = nullptr;
    const HRESULT hr =
        CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&object));
    const ClassPlace place{sizeof(void*) == 8, false};
    if (SUCCEEDED(hr)) {
        object->Release();
        findings_.push_back(
            {Grade::Ok,
             L"component",
             L"an object can be created in this " + std::wstring(place.is64Bit ? L"64" : L"32") + L"-bit program",
             {}});
    } else {
        wchar_t code[16] = {};
        wsprintfW(code, L"0x%08lX", static_cast<unsigned long>(hr));
        findings_.push_back({Grade::Problem, L"component", std::wstring(L"no object can be created: ") + code,
                             L"see the other findings; security software may block the DLL"});
    }
    CoUninitialize();
}

void Installation::Examine() {
    bool any = false;
    bool ownBitness = false;
    for (const bool is64Bit : {true, false}) {
        if (is64Bit && !Is64BitWindows()) continue;
        const auto machine = ExamineClass({is64Bit, false});
        const auto user = ExamineClass({is64Bit, true});
        ExamineOverride(is64Bit, machine, user);
        if (machine || user) {
            any = true;
            ownBitness = ownBitness || is64Bit == (sizeof(void*) == 8);
        } else {
            Add({is64Bit, false}, Grade::Problem, L"not registered",
                std::wstring(is64Bit ? L"64" : L"32") + L"-bit programs cannot use it: " + kMachineAdvice);
        }
    }
    if (any) CreateObject(ownBitness);
}

} // namespace

void ExamineInstallation(Findings& findings) {
    Installation(findings).Examine();
}

} // namespace quorvex::cli
