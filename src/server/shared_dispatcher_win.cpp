#include "server/shared_dispatcher_win.h"

#include "server/module_win.h"
#include "support/lock_win.h"

#include <quorvex_com.h>

#include <iterator>

namespace quorvex::server {
namespace {

constexpr const wchar_t* kAnswerInArguments[] = {L"GetFullAddressLineForSelectionAdv", L"Nearest_StartList",
                                                 L"Nearest_GetRecord"};

// The one dispatcher and the objects that share it.
struct Shared {
    SRWLOCK lock = SRWLOCK_INIT;
    Dispatcher* dispatcher = nullptr;
    long objects = 0;
} shared;

ITypeInfo* LoadOwnTypeInfo() {
    static wchar_t path[32768]; // under the lock; too large for a host's stack
    const DWORD length = GetModuleFileNameW(ModuleInstance(), path, static_cast<DWORD>(std::size(path)));
    if (length == 0 || length >= std::size(path)) return nullptr;
    ITypeLib* library = nullptr;
    if (FAILED(LoadTypeLibEx(path, REGKIND_NONE, &library))) return nullptr;
    ITypeInfo* info = nullptr;
    library->GetTypeInfoOfGuid(IID__Quorvex, &info);
    library->Release();
    return info;
}

std::vector<DISPID> MembersThatAnswerInArguments(ITypeInfo* info) {
    std::vector<DISPID> members;
    for (const wchar_t* const name : kAnswerInArguments) {
        DISPID member = DISPID_UNKNOWN;
        LPOLESTR text = const_cast<LPOLESTR>(name);
        if (SUCCEEDED(info->GetIDsOfNames(&text, 1, &member))) members.push_back(member);
    }
    return members;
}

} // namespace

SharedDispatcher::SharedDispatcher() {
    const support::Locked guard(shared.lock);
    ++shared.objects;
}

SharedDispatcher::~SharedDispatcher() {
    const support::Locked guard(shared.lock);
    if (--shared.objects == 0) {
        delete shared.dispatcher;
        shared.dispatcher = nullptr;
    }
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): it lasts only as long as the object is counted
Dispatcher* SharedDispatcher::Get() {
    const support::Locked guard(shared.lock);
    if (shared.dispatcher == nullptr) {
        if (ITypeInfo* const info = LoadOwnTypeInfo()) {
            shared.dispatcher = new Dispatcher(info, MembersThatAnswerInArguments(info));
            info->Release();
        }
    }
    return shared.dispatcher;
}

} // namespace quorvex::server
