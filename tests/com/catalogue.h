#pragma once

#include "com/automation.h"

#include <string>
#include <vector>

namespace quorvex::testing {

struct Parameter {
    std::wstring name;
    VARTYPE type = VT_EMPTY;
    bool byReference = false;
    USHORT flags = 0;
    Value defaultValue; // empty: none
};

struct Member {
    DISPID id = 0;
    INVOKEKIND kind = INVOKE_FUNC;
    short vtableOffset = 0; // bytes
    VARTYPE result = VT_VOID;
    std::wstring name;
    std::wstring help;
    std::vector<Parameter> parameters;
};

// The members of the object's own type information in the order of the interface, less those that it inherits.
std::vector<Member> Catalogue(IDispatch* object);

// "114 boolean GetFullAddressRecord(long& SelectedListIndex)"; optional arguments stand in brackets with their
// defaults.
std::wstring Signature(const Member& member);

} // namespace quorvex::testing
