#pragma once

#include <windows.h>

#include <oleauto.h>

#include <map>
#include <utility>
#include <vector>

namespace quorvex::server {

// IDispatch for script hosts, more forgiving than the plain type-library dispatcher: a by-reference argument may be a
// literal, a variable of any convertible type, or left out where it is optional; values that the method changed are
// written back into the caller's variable, unchanged ones keep the caller's own type.
class Dispatcher {
  public:
    explicit Dispatcher(ITypeInfo* info); // takes a reference of its own
    ~Dispatcher();
    Dispatcher(const Dispatcher&) = delete;
    Dispatcher& operator=(const Dispatcher&) = delete;

    ITypeInfo* Info() const { return info_; }
    // self: the dual interface itself.
    HRESULT Invoke(IDispatch* self, DISPID member, LCID locale, WORD flags, DISPPARAMS* params, VARIANT* result,
                   EXCEPINFO* exception, UINT* badArgument);

  private:
    struct Parameter {
        VARTYPE type = VT_EMPTY;
        bool byReference = false;
        bool optional = false;
        VARIANT defaultValue{}; // VT_EMPTY: none
    };
    struct Signature {
        WORD kind = 0; // invocation kind; 0: no such member
        std::vector<Parameter> parameters;
        bool fillsIn = false; // answers stand in its arguments
    };

    const Signature& Find(DISPID member, WORD flags);
    Signature Read(DISPID member, WORD flags) const;

    ITypeInfo* info_;
    SRWLOCK lock_ = SRWLOCK_INIT; // objects of several apartments share one dispatcher
    std::map<std::pair<DISPID, WORD>, Signature> signatures_;
};

// The component's own dispatcher, shared by all objects and gone with the last of them.
class SharedDispatcher {
  public:
    SharedDispatcher();
    ~SharedDispatcher();
    SharedDispatcher(const SharedDispatcher&) = delete;
    SharedDispatcher& operator=(const SharedDispatcher&) = delete;

    // Loads the type library from the DLL itself, registered or not; null when that fails.
    Dispatcher* Get();
};

} // namespace quorvex::server
