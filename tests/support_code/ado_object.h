#pragma once

#include "support/dispatch_win.h"
#include "support_code/ado_stand_in.h"

#include <span>

namespace quorvex::testing {

using AdoArguments = std::vector<support::Variant>; // in written order, omitted ones at the end left out

[[noreturn]] inline void RefuseArguments() {
    throw support::Error(
        3001, L"Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another.");
}

// A scriptable object made of a table of members. Derived is the class that holds the handlers, and Name(), by which
// its calls are noted; without a name they are not.
template <typename Derived>
struct AdoMember {
    const wchar_t* name;
    WORD kind; // DISPATCH_METHOD, DISPATCH_PROPERTYGET or DISPATCH_PROPERTYPUT
    std::size_t least;
    std::size_t most;
    support::Variant (Derived::*run)(const AdoArguments&);
};

template <typename Derived>
class AdoObject : public IDispatch {
  public:
    explicit AdoObject(AdoStandIn& world) : world_(world) { ++world_.liveObjects; }
    AdoObject(const AdoObject&) = delete;
    AdoObject& operator=(const AdoObject&) = delete;

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch);
        *object = known ? static_cast<IDispatch*>(this) : nullptr;
        if (!known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --references_;
        if (left == 0) delete static_cast<Derived*>(this);
        return left;
    }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return DISP_E_BADINDEX; }

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        const auto members = Derived::Members();
        for (std::size_t i = 0; i < members.size(); ++i) {
            if (lstrcmpiW(members[i].name, names[0]) == 0) {
                ids[0] = static_cast<DISPID>(i + 1);
                return S_OK;
            }
        }
        ids[0] = DISPID_UNKNOWN;
        return DISP_E_UNKNOWNNAME;
    }

    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT*) override {
        const auto members = Derived::Members();
        if (id < 1 || static_cast<std::size_t>(id) > members.size()) return DISP_E_MEMBERNOTFOUND;
        const wchar_t* const name = members[static_cast<std::size_t>(id - 1)].name;
        for (const auto& member : members) {
            if ((member.kind & flags) == 0 || lstrcmpiW(member.name, name) != 0) continue;
            return Run(member, *parameters, result, exception);
        }
        return DISP_E_MEMBERNOTFOUND;
    }

  protected:
    ~AdoObject() { --world_.liveObjects; } // Release deletes the derived class itself

    AdoStandIn& world_;

  private:
    // "Recordset.Find [ID]=2", "Connection.Mode = 8"; arguments that are objects are left out.
    void Note(const AdoMember<Derived>& member, const AdoArguments& arguments) {
        const std::wstring name = static_cast<Derived*>(this)->Name();
        if (name.empty()) return;
        std::wstring call = name + L"." + member.name;
        const wchar_t* separator = member.kind == DISPATCH_PROPERTYPUT ? L" = " : L" ";
        for (const support::Variant& argument : arguments) {
            if (argument.Type() == VT_DISPATCH) continue;
            call += separator + (argument.IsNull() ? L"Null" : argument.Text());
            separator = L"|";
        }
        world_.calls.push_back(call);
    }

    HRESULT Run(const AdoMember<Derived>& member, const DISPPARAMS& parameters, VARIANT* result, EXCEPINFO* exception) {
        AdoArguments arguments;
        for (UINT i = parameters.cArgs; i > 0; --i) {
            support::Variant argument;
            if (FAILED(VariantCopyInd(argument.Out(), &parameters.rgvarg[i - 1]))) return DISP_E_TYPEMISMATCH;
            arguments.push_back(std::move(argument));
        }
        while (!arguments.empty() && arguments.back().Type() == VT_ERROR) arguments.pop_back();
        if (arguments.size() < member.least || arguments.size() > member.most) return DISP_E_BADPARAMCOUNT;
        try {
            Note(member, arguments);
            support::Variant answer = (static_cast<Derived*>(this)->*member.run)(arguments);
            return result == nullptr ? S_OK : VariantCopy(result, const_cast<VARIANT*>(&answer.Get()));
        } catch (const support::Error& refusal) {
            if (exception != nullptr) {
                const long number = refusal.Number();
                exception->scode = number < 0 ? number : MAKE_SCODE(SEVERITY_ERROR, FACILITY_CONTROL, number);
                exception->bstrSource = SysAllocString(L"ADODB");
                exception->bstrDescription = SysAllocString(refusal.Description().c_str());
            }
            return DISP_E_EXCEPTION;
        }
    }

    ULONG references_ = 1;
};

} // namespace quorvex::testing
