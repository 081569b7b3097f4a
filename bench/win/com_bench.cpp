// What COM adds to a lookup: properties and whole lookups early bound (by the interface's own functions) and late bound
// (by dispatch identifiers, as scripts call), against the DLL named first and the data folder named second.
//
//   com_bench.exe QuorvexLookup.dll FOLDER POSTCODE...

#include <windows.h>

#include <oleauto.h>
#include <quorvex_com.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cwchar>
#include <string>
#include <vector>

namespace {

constexpr int kRounds = 9; // the median counts

template <typename Call>
double Microseconds(int calls, Call call) {
    std::vector<double> rounds;
    for (int round = 0; round < kRounds; ++round) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < calls; ++i) call(i);
        const auto taken = std::chrono::steady_clock::now() - start;
        rounds.push_back(std::chrono::duration<double, std::micro>(taken).count() / calls);
    }
    std::nth_element(rounds.begin(), rounds.begin() + kRounds / 2, rounds.end());
    return rounds[kRounds / 2];
}

DISPID IdOf(IDispatch* object, const wchar_t* name) {
    LPOLESTR text = const_cast<LPOLESTR>(name);
    DISPID id = DISPID_UNKNOWN;
    object->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

// A call with at most one text, as a script host makes it; true unless it failed or answered False.
bool Invoke(IDispatch* object, DISPID member, WORD flags, BSTR* text) {
    VARIANT argument{};
    argument.vt = VT_BSTR | VT_BYREF;
    argument.pbstrVal = text;
    DISPPARAMS params{&argument, nullptr, text == nullptr ? 0U : 1U, 0};
    VARIANT result{};
    const HRESULT hr = object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, &result, nullptr, nullptr);
    const bool good = SUCCEEDED(hr) && !(result.vt == VT_BOOL && result.boolVal == VARIANT_FALSE);
    VariantClear(&result);
    return good;
}

int Fail(const char* what) {
    std::fprintf(stderr, "com_bench: %s\n", what);
    return 1;
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    if (count < 4) return Fail("DLL, data folder and postcodes are wanted");
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const HMODULE dll = LoadLibraryW(arguments[1]);
    const auto get = reinterpret_cast<HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**)>(
        reinterpret_cast<void*>(dll == nullptr ? nullptr : GetProcAddress(dll, "DllGetClassObject")));
    IClassFactory* factory = nullptr;
    _Quorvex* object = nullptr;
    if (get == nullptr || FAILED(get(CLSID_Quorvex, IID_IClassFactory, reinterpret_cast<void**>(&factory))) ||
        FAILED(factory->CreateInstance(nullptr, IID__Quorvex, reinterpret_cast<void**>(&object)))) {
        return Fail("no object");
    }
    BSTR folder = SysAllocString(arguments[2]);
    object->LMSetDataPath(&folder);
    std::vector<BSTR> postcodes;
    std::vector<BSTR> identifiers;
    for (int i = 3; i < count; ++i) {
        postcodes.push_back(SysAllocString(arguments[i]));
        identifiers.push_back(SysAllocString((std::wstring(arguments[i]) + L"_1_F").c_str()));
    }
    bool good = true;
    const auto early = [&](auto method, const std::vector<BSTR>& texts) {
        return Microseconds(200, [&](int i) {
            BSTR text = texts[static_cast<std::size_t>(i) % texts.size()];
            VARIANT_BOOL found = VARIANT_FALSE;
            (object->*method)(&text, &found);
            good = good && found == VARIANT_TRUE;
        });
    };
    const auto late = [&](const wchar_t* name, const std::vector<BSTR>& texts) {
        const DISPID id = IdOf(object, name);
        return Microseconds(200, [&](int i) {
            BSTR text = texts[static_cast<std::size_t>(i) % texts.size()];
            good = Invoke(object, id, DISPATCH_METHOD, &text) && good;
        });
    };
    const auto print = [](const char* name, double earlyTime, double lateTime) {
        std::printf("%s\t%.3f\t%.3f\n", name, earlyTime, lateTime);
    };
    print("record", early(&_Quorvex::GetFullAddressRecordByAddressID, identifiers),
          late(L"GetFullAddressRecordByAddressID", identifiers));
    const double earlyRead = Microseconds(20000, [&](int) {
        BSTR town = nullptr;
        object->get_Address_Town(&town);
        SysFreeString(town);
    });
    const DISPID town = IdOf(object, L"Address_Town");
    const double lateRead = Microseconds(20000, [&](int) { Invoke(object, town, DISPATCH_PROPERTYGET, nullptr); });
    print("property", earlyRead, lateRead);
    print("list", early(&_Quorvex::GetFullAddressToList, postcodes), late(L"GetFullAddressToList", postcodes));
    print("PostZon", early(&_Quorvex::GetPostZonAddressRecord, postcodes), late(L"GetPostZonAddressRecord", postcodes));
    object->Release();
    factory->Release();
    return good ? 0 : Fail("a lookup found nothing");
}
