#include "com/catalogue.h"

#include "com/host.h"

#include <map>

namespace quorvex::testing {
namespace {

std::wstring TypeName(VARTYPE type) {
    static const std::map<VARTYPE, const wchar_t*> names = {
        {VT_VOID, L"none"}, {VT_BSTR, L"text"}, {VT_BOOL, L"boolean"},   {VT_I2, L"short"},
        {VT_I4, L"long"},   {VT_R8, L"double"}, {VT_VARIANT, L"variant"}};
    const auto name = names.find(type);
    return name == names.end() ? L"type" + std::to_wstring(type) : name->second;
}

Parameter Read(const ELEMDESC& element, const std::wstring& name) {
    Parameter parameter;
    parameter.name = name;
    parameter.byReference = element.tdesc.vt == VT_PTR;
    parameter.type = parameter.byReference ? element.tdesc.lptdesc->vt : element.tdesc.vt;
    parameter.flags = element.paramdesc.wParamFlags;
    if ((parameter.flags & PARAMFLAG_FHASDEFAULT) != 0) {
        VariantCopy(&parameter.defaultValue, &element.paramdesc.pparamdescex->varDefaultValue);
    }
    return parameter;
}

Member Read(ITypeInfo* info, const FUNCDESC& function) {
    Member member;
    member.id = function.memid;
    member.kind = function.invkind;
    member.vtableOffset = function.oVft;
    member.result = function.elemdescFunc.tdesc.vt;
    std::vector<BSTR> names(static_cast<std::size_t>(function.cParams) + 1);
    UINT count = 0;
    info->GetNames(function.memid, names.data(), static_cast<UINT>(names.size()), &count);
    member.name = count > 0 ? names[0] : L"";
    for (int i = 0; i < function.cParams; ++i) {
        const auto k = static_cast<std::size_t>(i) + 1;
        // What is put into a property has no name of its own.
        const std::wstring parameterName = k < count ? names[k] : L"value";
        member.parameters.push_back(Read(function.lprgelemdescParam[i], parameterName));
    }
    for (BSTR name : names) SysFreeString(name);
    Text help;
    info->GetDocumentation(function.memid, nullptr, help.Out(), nullptr, nullptr);
    member.help = help.Str();
    return member;
}

} // namespace

std::vector<Member> Catalogue(IDispatch* object) {
    constexpr DISPID kInherited = 0x60000000; // the members of IUnknown and IDispatch begin here
    std::vector<Member> members;
    ITypeInfo* loaded = nullptr;
    EXPECT_EQ(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, &loaded), S_OK);
    const Ptr<ITypeInfo> info(loaded);
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(info->GetTypeAttr(&attributes), S_OK);
    for (UINT i = 0; i < attributes->cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        if (FAILED(info->GetFuncDesc(i, &function))) continue;
        if (function->memid < kInherited) members.push_back(Read(info.get(), *function));
        info->ReleaseFuncDesc(function);
    }
    info->ReleaseTypeAttr(attributes);
    return members;
}

std::wstring Signature(const Member& member) {
    const wchar_t* const kind = member.kind == INVOKE_PROPERTYGET   ? L" get "
                                : member.kind == INVOKE_PROPERTYPUT ? L" put "
                                                                    : L" ";
    std::wstring text = std::to_wstring(member.id) + kind + TypeName(member.result) + L" " + member.name + L"(";
    for (std::size_t i = 0; i < member.parameters.size(); ++i) {
        const Parameter& parameter = member.parameters[i];
        std::wstring shown = TypeName(parameter.type) + (parameter.byReference ? L"& " : L" ") + parameter.name;
        if ((parameter.flags & PARAMFLAG_FHASDEFAULT) != 0) {
            shown += parameter.defaultValue.vt == VT_BSTR ? L"='" + parameter.defaultValue.Str() + L"'"
                                                          : L"=" + std::to_wstring(parameter.defaultValue.iVal);
        }
        if ((parameter.flags & PARAMFLAG_FOPT) != 0) shown = L"[" + shown + L"]";
        text += (i > 0 ? L", " : L"") + shown;
    }
    return text + L")";
}

} // namespace quorvex::testing
