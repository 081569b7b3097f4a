// Early-bound host in C++: lists the addresses at a postcode, picks one and prints its fields.
//
//   find_address "POSTCODE" [N] [/server:URL] [/key:KEY] [/data:FOLDER]
//
// Built against the header that the type library compiler makes (quorvex_com.h); other compilers can use
// #import "QuorvexLookup.dll" instead.
#include <windows.h>

#include <oleauto.h>
#include <quorvex_com.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

// Arguments go by reference, as Automation texts.
class Bstr {
  public:
    explicit Bstr(const std::wstring& text = {})
        : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
    ~Bstr() { SysFreeString(text_); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;

    BSTR* In() { return &text_; }
    BSTR* Out() {
        SysFreeString(std::exchange(text_, nullptr));
        return &text_;
    }
    std::wstring Text() const { return text_ == nullptr ? std::wstring() : std::wstring(text_, SysStringLen(text_)); }

  private:
    BSTR text_;
};

struct Options {
    std::wstring postcode;
    std::wstring server;
    std::wstring key;
    std::wstring data;
    long pick = 0; // 0: only list
};

bool ParseOptions(int count, wchar_t** arguments, Options& options) {
    std::vector<std::wstring> plain;
    const std::pair<std::wstring, std::wstring Options::*> named[] = {
        {L"/server:", &Options::server}, {L"/key:", &Options::key}, {L"/data:", &Options::data}};
    for (int i = 1; i < count; ++i) {
        const std::wstring argument = arguments[i];
        bool taken = false;
        for (const auto& [prefix, target] : named) {
            if (!argument.starts_with(prefix)) continue;
            options.*target = argument.substr(prefix.size());
            taken = true;
        }
        if (!taken) plain.push_back(argument);
    }
    if (plain.empty() || plain.size() > 2) return false;
    options.postcode = plain[0];
    if (plain.size() == 2) options.pick = std::wcstol(plain[1].c_str(), nullptr, 10);
    return plain.size() == 1 || options.pick > 0;
}

void Print(const std::wstring& text) {
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(), size, nullptr, nullptr);
    std::printf("%s\n", bytes.c_str());
}

int Fail(_Quorvex& lookup, const std::wstring& what) {
    Bstr reason;
    lookup.get_General_errormessage(reason.Out());
    Print(what + L": " + reason.Text());
    return 1;
}

std::vector<std::wstring> Lines(_Quorvex& lookup) {
    std::vector<std::wstring> lines;
    for (;;) {
        Bstr line;
        if (FAILED(lookup.GetFullAddressLineForSelection(line.Out())) || line.Text().empty()) return lines;
        lines.push_back(line.Text());
    }
}

void PrintRecord(_Quorvex& lookup) {
    using Getter = HRESULT (STDMETHODCALLTYPE _Quorvex::*)(BSTR*);
    const std::pair<const wchar_t*, Getter> fields[] = {
        {L"Organisation", &_Quorvex::get_Address_Organisation},
        {L"Line 1", &_Quorvex::get_Address_Line1},
        {L"Line 2", &_Quorvex::get_Address_Line2},
        {L"Line 3", &_Quorvex::get_Address_Line3},
        {L"Town", &_Quorvex::get_Address_Town},
        {L"County", &_Quorvex::get_Address_County},
        {L"Postcode", &_Quorvex::get_Address_Postcode},
        {L"Country", &_Quorvex::get_Address_Country},
        {L"Identifier", &_Quorvex::get_Address_Id},
    };
    for (const auto& [name, get] : fields) {
        Bstr value;
        if (SUCCEEDED((lookup.*get)(value.Out())) && !value.Text().empty()) Print(name + (L": " + value.Text()));
    }
}

int Run(_Quorvex& lookup, const Options& options) {
    if (!options.key.empty()) lookup.SetDataKey(Bstr(options.key).In());
    if (!options.server.empty()) lookup.SetServiceURL(Bstr(options.server).In());
    if (!options.data.empty()) lookup.LMSetDataPath(Bstr(options.data).In());

    VARIANT_BOOL found = VARIANT_FALSE;
    lookup.GetFullAddressToList(Bstr(options.postcode).In(), &found);
    if (found == VARIANT_FALSE) return Fail(lookup, L"The search failed");
    const std::vector<std::wstring> lines = Lines(lookup);
    for (std::size_t i = 0; i < lines.size(); ++i) Print(std::to_wstring(i + 1) + L"  " + lines[i]);
    if (lines.empty()) Print(L"No addresses at " + options.postcode);
    if (options.pick == 0) return lines.empty() ? 1 : 0;

    long index = options.pick - 1; // lines are counted from 0
    lookup.GetFullAddressRecord(&index, &found);
    if (found == VARIANT_FALSE) return Fail(lookup, L"There is no such address");
    PrintRecord(lookup);
    return 0;
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    Options options;
    if (!ParseOptions(count, arguments, options)) {
        Print(L"usage: find_address \"POSTCODE\" [N] [/server:URL] [/key:KEY] [/data:FOLDER]");
        return 2;
    }
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 2;
    _Quorvex* lookup = nullptr;
    const HRESULT hr =
        CoCreateInstance(CLSID_Quorvex, nullptr, CLSCTX_INPROC_SERVER, IID__Quorvex, reinterpret_cast<void**>(&lookup));
    int result = 2;
    if (SUCCEEDED(hr)) {
        result = Run(*lookup, options);
        lookup->Release();
    } else {
        Print(L"The address lookup component is not registered for this bitness (regsvr32 QuorvexLookup.dll)");
    }
    CoUninitialize();
    return result;
}
