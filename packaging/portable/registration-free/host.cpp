// A host that uses the component without any registration: its manifest names the assembly.
//
//   host.exe POSTCODE DATA-FOLDER

#include <windows.h>

#include <oleauto.h>

#include <cstdio>

// Calls a method or reads a property by name, late bound as scripts do it.
static HRESULT Call(IDispatch* object, const wchar_t* name, WORD kind, const wchar_t* text, VARIANT* result) {
    DISPID id;
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    HRESULT hr = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(hr)) return hr;
    VARIANT argument;
    VariantInit(&argument);
    argument.vt = VT_BSTR;
    argument.bstrVal = SysAllocString(text);
    DISPPARAMS parameters = {text != nullptr ? &argument : nullptr, nullptr, text != nullptr ? 1u : 0u, 0};
    hr = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, result, nullptr, nullptr);
    VariantClear(&argument);
    return hr;
}

int wmain(int argc, wchar_t** argv) {
    if (argc != 3) {
        std::wprintf(L"usage: host POSTCODE DATA-FOLDER\n");
        return 2;
    }
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    CLSID classId;
    IDispatch* object = nullptr;
    HRESULT hr = CLSIDFromString(L"{1D6679CA-4011-4747-9EAF-18731D88251A}", &classId);
    if (SUCCEEDED(hr)) {
        hr = CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&object));
    }
    if (FAILED(hr)) {
        std::wprintf(L"no object: 0x%08lX\n", static_cast<unsigned long>(hr));
        return 1;
    }
    VARIANT result;
    VariantInit(&result);
    Call(object, L"LMSetDataPath", DISPATCH_METHOD, argv[2], nullptr);
    Call(object, L"GetFullAddressToList", DISPATCH_METHOD, argv[1], &result);
    for (;;) {
        VariantClear(&result);
        Call(object, L"GetFullAddressLineForSelection", DISPATCH_METHOD, nullptr, &result);
        if (result.vt != VT_BSTR || SysStringLen(result.bstrVal) == 0) break;
        std::wprintf(L"%ls\n", result.bstrVal);
    }
    VariantClear(&result);
    object->Release();
    CoUninitialize();
    return 0;
}
