#include "server/dispatcher_win.h"

#include "support/lock_win.h"

#include <quorvex_com.h>

#include <algorithm>
#include <cstring>

namespace quorvex::server {
namespace {

// A VARIANT that is cleared at the end.
struct Variant : VARIANT {
    Variant() : VARIANT{} {}
    ~Variant() { VariantClear(this); }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
};

// The variant behind any number of by-reference variants.
VARIANT* Target(VARIANT* value) {
    while (value->vt == (VT_BYREF | VT_VARIANT) && value->pvarVal != nullptr) value = value->pvarVal;
    return value;
}

bool Missing(const VARIANT* value) {
    return value == nullptr || (value->vt == VT_ERROR && value->scode == DISP_E_PARAMNOTFOUND);
}

bool SameText(BSTR a, BSTR b) {
    const UINT length = SysStringByteLen(a);
    return length == SysStringByteLen(b) && (length == 0 || std::memcmp(a, b, length) == 0);
}

bool Same(const VARIANT& a, const VARIANT& b) {
    return a.vt == VT_BSTR ? SameText(a.bstrVal, b.bstrVal) : a.llVal == b.llVal;
}

// A variable that holds nothing yet.
bool Unset(VARIANT* argument) {
    const VARIANT* const target = Target(argument);
    return target->vt == VT_EMPTY;
}

// Converts the caller's argument to the parameter's type. Arrays and objects without a default value fail here.
HRESULT Convert(VARIANT* argument, VARTYPE type, LCID locale, VARIANT* converted) {
    Variant plain;
    const HRESULT hr = VariantCopyInd(&plain, argument);
    if (FAILED(hr)) return hr;
    if (type == VT_VARIANT) return VariantCopy(converted, &plain);
    // VARIANT_ALPHABOOL: True and False as texts, not -1 and 0.
    return VariantChangeTypeEx(converted, &plain, locale, VARIANT_ALPHABOOL, type);
}

// Stores a method's out value in the caller's by-reference argument, in the caller's type.
void WriteBack(VARIANT* argument, VARIANT& value, LCID locale) {
    while (argument->vt == (VT_BYREF | VT_VARIANT) && (argument->pvarVal->vt & VT_BYREF) != 0)
        argument = argument->pvarVal;
    if (argument->vt == (VT_BYREF | VT_VARIANT)) {
        VariantCopy(argument->pvarVal, &value);
        return;
    }
    Variant own;
    const VARTYPE type = argument->vt & VT_TYPEMASK;
    if ((argument->vt & VT_ARRAY) != 0 || FAILED(VariantChangeTypeEx(&own, &value, locale, 0, type))) return;
    switch (own.vt) {
    case VT_BSTR:
        SysFreeString(*argument->pbstrVal);
        *argument->pbstrVal = own.bstrVal;
        own.vt = VT_EMPTY; // the text is the caller's now
        break;
    case VT_I1:
    case VT_UI1:
        *argument->pbVal = own.bVal;
        break;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        *argument->piVal = own.iVal;
        break;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
        *argument->plVal = own.lVal;
        break;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_DATE:
    case VT_CY:
        *argument->pllVal = own.llVal;
        break;
    case VT_DECIMAL:
        *argument->pdecVal = own.decVal;
        argument->pdecVal->wReserved = 0; // shared with the type field of a VARIANT
        break;
    default:
        break;
    }
}

} // namespace

Dispatcher::Dispatcher(ITypeInfo* info, std::vector<DISPID> answerInArguments)
    : info_(info), answerInArguments_(std::move(answerInArguments)) {
    info_->AddRef();
}

Dispatcher::~Dispatcher() {
    for (auto& entry : signatures_) {
        for (Parameter& parameter : entry.second.parameters) VariantClear(&parameter.defaultValue);
    }
    info_->Release();
}

Dispatcher::Signature Dispatcher::Read(DISPID member, WORD flags) const {
    Signature signature;
    TYPEATTR* attributes = nullptr;
    if (FAILED(info_->GetTypeAttr(&attributes))) return signature;
    for (UINT i = 0; i < attributes->cFuncs && signature.kind == 0; ++i) {
        FUNCDESC* function = nullptr;
        if (FAILED(info_->GetFuncDesc(i, &function))) continue;
        if (function->memid == member && (static_cast<WORD>(function->invkind) & flags) != 0) {
            signature.kind = static_cast<WORD>(function->invkind);
            signature.answersInArguments = std::ranges::find(answerInArguments_, member) != answerInArguments_.end();
            for (int k = 0; k < function->cParams; ++k) {
                const ELEMDESC& element = function->lprgelemdescParam[k];
                const USHORT traits = element.paramdesc.wParamFlags;
                if ((traits & PARAMFLAG_FRETVAL) != 0) continue;
                Parameter parameter;
                parameter.byReference = element.tdesc.vt == VT_PTR;
                parameter.type = parameter.byReference ? element.tdesc.lptdesc->vt : element.tdesc.vt;
                parameter.optional = (traits & PARAMFLAG_FOPT) != 0;
                // A deep copy: the description dies with the function's.
                if ((traits & PARAMFLAG_FHASDEFAULT) != 0) {
                    VariantCopy(&parameter.defaultValue, &element.paramdesc.pparamdescex->varDefaultValue);
                }
                signature.parameters.push_back(parameter);
            }
        }
        info_->ReleaseFuncDesc(function);
    }
    info_->ReleaseTypeAttr(attributes);
    return signature;
}

const Dispatcher::Signature& Dispatcher::Find(DISPID member, WORD flags) {
    const support::Locked guard(lock_);
    const auto key = std::make_pair(member, flags);
    const auto known = signatures_.find(key);
    if (known != signatures_.end()) return known->second; // entries never move
    Signature signature = Read(member, flags);
    static const Signature kNone;
    if (signature.kind == 0) return kNone; // not kept: a host may ask for any number of members
    return signatures_.emplace(key, std::move(signature)).first->second;
}

HRESULT Dispatcher::Invoke(IDispatch* self, DISPID member, LCID locale, WORD flags, DISPPARAMS* params, VARIANT* result,
                           EXCEPINFO* exception, UINT* badArgument) {
    if (params == nullptr) return E_INVALIDARG;
    const Signature& signature = Find(member, flags);
    if (signature.kind == 0) return DISP_E_MEMBERNOTFOUND;
    const UINT count = static_cast<UINT>(signature.parameters.size());
    if (params->cArgs < params->cNamedArgs || params->cArgs - params->cNamedArgs > count) return DISP_E_BADPARAMCOUNT;

    std::vector<VARIANT*> given(count);
    std::vector<UINT> position(count); // index of the argument in the caller's array
    const UINT positional = params->cArgs - params->cNamedArgs;
    for (UINT i = 0; i < positional; ++i) { // the caller's array runs backwards
        position[i] = params->cArgs - 1 - i;
        given[i] = &params->rgvarg[position[i]];
    }
    for (UINT i = 0; i < params->cNamedArgs; ++i) {
        const DISPID name = params->rgdispidNamedArgs[i];
        const UINT k = name == DISPID_PROPERTYPUT ? count - 1 : static_cast<UINT>(name);
        if (k >= count || given[k] != nullptr) return DISP_E_PARAMNOTFOUND;
        position[k] = i;
        given[k] = &params->rgvarg[i];
    }

    std::vector<Variant> values(count);
    std::vector<Variant> before(count);
    std::vector<VARIANT> arguments(count); // borrowed views of values, in reverse order
    for (UINT i = 0; i < count; ++i) {
        const Parameter& parameter = signature.parameters[i];
        VARIANT* const argument = given[i] == nullptr ? nullptr : Target(given[i]);
        HRESULT hr = S_OK;
        if (Missing(argument)) {
            if (!parameter.optional) return argument == nullptr ? DISP_E_BADPARAMCOUNT : DISP_E_PARAMNOTOPTIONAL;
            if (parameter.defaultValue.vt != VT_EMPTY) {
                hr = VariantCopy(&values[i], const_cast<VARIANT*>(&parameter.defaultValue));
            } else {
                values[i].vt = parameter.type; // zero, or a null text
            }
        } else {
            hr = Convert(argument, parameter.type, locale, &values[i]);
        }
        if (SUCCEEDED(hr)) hr = VariantCopy(&before[i], &values[i]);
        if (FAILED(hr)) {
            if (badArgument != nullptr) *badArgument = position[i];
            return hr;
        }
        VARIANT& view = arguments[count - 1 - i];
        if (parameter.byReference) {
            view.vt = static_cast<VARTYPE>(VT_BYREF | parameter.type);
            view.byref =
                parameter.type == VT_VARIANT ? static_cast<void*>(&values[i]) : static_cast<void*>(&values[i].llVal);
        } else {
            view = values[i];
        }
    }

    DISPID put = DISPID_PROPERTYPUT;
    const bool isPut = (signature.kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    DISPPARAMS call{arguments.data(), isPut ? &put : nullptr, count, isPut ? 1U : 0U};
    const HRESULT hr = info_->Invoke(self, member, signature.kind, &call, result, exception, badArgument);
    if (FAILED(hr)) return hr;
    const bool failed = result != nullptr && result->vt == VT_BOOL && result->boolVal == VARIANT_FALSE;
    for (UINT i = 0; i < count; ++i) {
        const bool out = signature.parameters[i].byReference && given[i] != nullptr && (given[i]->vt & VT_BYREF) != 0;
        if (!out) continue;
        // Where the caller's variable held nothing, 0 or no characters is an answer as well.
        const bool answer = signature.answersInArguments && !failed && Unset(given[i]);
        if (answer || !Same(values[i], before[i])) WriteBack(given[i], values[i], locale);
    }
    return hr;
}

} // namespace quorvex::server
