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
    // Takes a reference of its own. The methods of answerInArguments return whether they have an answer and put it into
    // their arguments: then 0 or no characters is also written into a variable that held nothing.
    Dispatcher(ITypeInfo* info, std::vector<DISPID> answerInArguments);
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
        bool answersInArguments = false;
    };

    const Signature& Find(DISPID member, WORD flags);
    Signature Read(DISPID member, WORD flags) const;

    ITypeInfo* info_;
    std::vector<DISPID> answerInArguments_;
    SRWLOCK lock_ = SRWLOCK_INIT; // objects of several apartments share one dispatcher
    std::map<std::pair<DISPID, WORD>, Signature> signatures_;
};

} // namespace quorvex::server
