#pragma once

#include "support/automation_object_win.h"
#include "testing/guard.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace quorvex::testing {

using Arguments = std::vector<support::Variant>; // in written order, omitted ones at the end left out

// Every automation object that a test made.
inline LeakCounter automationObjects("automation objects");

// An automation object made of handlers. Each call goes into a list as it would be written: Item.Subject = "Logs",
// Body.AddNewLine(1); arguments that are objects are left out. Objects without a name are not listed.
class ScriptedObject final : public IDispatch {
  public:
    using Handler = std::function<support::Variant(const Arguments&)>;

    ScriptedObject(std::vector<std::wstring>& calls, std::wstring name);

    ScriptedObject& Method(const wchar_t* name, std::size_t least, std::size_t most, Handler handler);
    ScriptedObject& Get(const wchar_t* name, Handler handler);
    ScriptedObject& Put(const wchar_t* name, Handler handler);
    // Takes every other member; told the whole name of the call (Application.CreateItem).
    ScriptedObject& Any(std::function<support::Variant(const std::wstring& call)> handler);

    STDMETHODIMP QueryInterface(REFIID id, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return DISP_E_BADINDEX; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override;
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT*) override;

  private:
    struct Member {
        std::wstring name;
        WORD kind; // DISPATCH_METHOD, DISPATCH_PROPERTYGET or DISPATCH_PROPERTYPUT
        std::size_t least;
        std::size_t most;
        Handler handler;
    };

    ~ScriptedObject() { automationObjects.Add(-1); }
    void Note(const std::wstring& call, bool put, const Arguments& arguments);

    std::vector<std::wstring>& calls_;
    std::wstring name_;
    std::vector<Member> members_;
    std::vector<std::wstring> names_; // by DISPID
    std::function<support::Variant(const std::wstring&)> any_;
    ULONG references_ = 1;
};

// Gives up the caller's reference: what a handler returns.
support::Variant Returned(ScriptedObject* object);

// While it lives, a ProgID creates objects of a test's own in the apartment of the thread that made it. A class id that
// is not null is registered under the ProgID unless the machine has one.
class ProgramStandIn {
  public:
    ProgramStandIn(const wchar_t* progId, const wchar_t* classId, std::function<ScriptedObject*()> make);
    ProgramStandIn(const ProgramStandIn&) = delete;
    ProgramStandIn& operator=(const ProgramStandIn&) = delete;
    ~ProgramStandIn();

    // Makes the ProgID name another class.
    void SetClass(const std::wstring& classId);

  private:
    std::wstring key_;
    bool registered_ = false;
    DWORD cookie_ = 0;
};

} // namespace quorvex::testing
