// A host that carries the shared run-time library of the compiler, as programs built with it do: our exceptions must
// find our own unwind tables all the same. Arguments: the shared library, the component's DLL.
#include <windows.h>

#include <quorvex_com.h>

#include <cstdio>
#include <cwchar>

int wmain(int count, wchar_t** arguments) {
    if (count != 3 || LoadLibraryW(arguments[1]) == nullptr)
        return std::puts("FAIL: the shared library does not load"), 1;
    const HMODULE dll = LoadLibraryW(arguments[2]);
    const auto get = reinterpret_cast<HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**)>(
        reinterpret_cast<void*>(dll == nullptr ? nullptr : GetProcAddress(dll, "DllGetClassObject")));
    IClassFactory* factory = nullptr;
    _Quorvex* object = nullptr;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (get == nullptr || FAILED(get(CLSID_Quorvex, IID_IClassFactory, reinterpret_cast<void**>(&factory))) ||
        FAILED(factory->CreateInstance(nullptr, IID__Quorvex, reinterpret_cast<void**>(&object)))) {
        return std::puts("FAIL: no object"), 1;
    }
    BSTR url = SysAllocString(L"ftp://not.the.web"); // refused inside by an exception
    BSTR reply = nullptr;
    object->GetDataFromHTTPRequest(&url, &reply);
    const bool answered = reply != nullptr && std::wcsstr(reply, L"timed out") != nullptr;
    SysFreeString(reply);
    SysFreeString(url);
    object->Release();
    factory->Release();
    std::puts(answered ? "PASS" : "FAIL: no answer");
    return answered ? 0 : 1;
}
