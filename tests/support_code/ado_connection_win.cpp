#include "support_code/ado_objects.h"

#include "support/text.h"

#include <array>

namespace quorvex::testing {
namespace {

constexpr long kNoLogon = -2147217843;
constexpr long kFailed = -2147467259;

// "Name=value;Name=value": names without regard to case.
std::map<std::wstring, std::wstring> Parts(std::wstring connectionString) {
    std::map<std::wstring, std::wstring> parts;
    while (!connectionString.empty()) {
        std::wstring value = support::NextField(connectionString, L";", true);
        const std::wstring name = support::NextField(value, L"=", true);
        parts[support::UpperCase(name)] = value;
    }
    return parts;
}

} // namespace

AdoConnectionObject::AdoConnectionObject(AdoStandIn& world) : AdoObject(world) {
    world_.connections.insert(this);
}

AdoConnectionObject::~AdoConnectionObject() {
    world_.connections.erase(this); // open record sets hold a reference, so there are none now
}

std::span<const AdoMember<AdoConnectionObject>> AdoConnectionObject::Members() {
    using Me = AdoConnectionObject;
    static const std::array<AdoMember<Me>, 4> members = {{
        {L"Mode", DISPATCH_PROPERTYGET, 0, 0, &Me::GetMode},
        {L"Mode", DISPATCH_PROPERTYPUT, 1, 1, &Me::PutMode},
        {L"Open", DISPATCH_METHOD, 0, 4, &Me::Open},
        {L"Close", DISPATCH_METHOD, 0, 0, &Me::Close},
    }};
    return members;
}

support::Variant AdoConnectionObject::PutMode(const AdoArguments& arguments) {
    Note(L"Connection.Mode = " + arguments[0].Text());
    if (file_ != nullptr) RefuseOpen();
    const std::int32_t mode = arguments[0].Int();
    if (mode < 0 || mode > 16) RefuseArguments();
    mode_ = mode;
    return {};
}

support::Variant AdoConnectionObject::Open(const AdoArguments& arguments) {
    const auto text = [&](std::size_t i) { return i < arguments.size() ? arguments[i].Text() : std::wstring(); };
    Note(L"Connection.Open " + text(0) + L"|" + text(1) + L"|" + text(2));
    if (file_ != nullptr) RefuseOpen();
    auto parts = Parts(text(0));
    if (parts[L"PROVIDER"] != L"Microsoft.Jet.OLEDB.4.0") {
        Refuse(3706, L"Provider cannot be found. It may not be properly installed.");
    }
    const std::wstring& path = parts[L"DATA SOURCE"];
    const auto found = world_.files.find(support::UpperCase(path));
    if (found == world_.files.end()) throw AdoRefusal{kFailed, L"Could not find file '" + path + L"'."};
    if (found->second.lockedByAnother) {
        throw AdoRefusal{kFailed, L"Could not use '" + path + L"'; file already in use."};
    }
    if (text(1) != L"admin" || !text(2).empty()) {
        Refuse(kNoLogon, L"Cannot start your application. The workgroup information file is missing or opened "
                         L"exclusively by another user.");
    }
    if (parts[L"JET OLEDB:DATABASE PASSWORD"] != found->second.password) Refuse(kNoLogon, L"Not a valid password.");
    file_ = &found->second;
    return {};
}

support::Variant AdoConnectionObject::Close(const AdoArguments&) {
    Note(L"Connection.Close");
    if (file_ == nullptr) RefuseClosed();
    // A record set lets go of the connection when it is dropped; that must not be the last reference here.
    AddRef();
    for (AdoRecordsetObject* const recordset : std::set(recordsets)) recordset->Drop();
    file_ = nullptr;
    Release();
    return {};
}

} // namespace quorvex::testing
