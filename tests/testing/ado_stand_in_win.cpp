#include "testing/ado_stand_in_win.h"

#include "database/ado/value_win.h"

#include <objbase.h>

namespace quorvex::testing {
namespace {

using database::Recordset;
using support::Variant;

[[noreturn]] void RefuseArguments() {
    throw support::Error(
        3001, L"Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another.");
}

int InRange(const Arguments& arguments, int least, int most) {
    const std::int32_t number = arguments[0].Int();
    if (number < least || number > most) RefuseArguments();
    return number;
}

template <typename Action>
ScriptedObject::Handler Do(Action action) {
    return [action](const Arguments& arguments) {
        action(arguments);
        return Variant();
    };
}

} // namespace

AdoStandIn::AdoStandIn() {
    initialised_ = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    programs_.push_back(
        std::make_unique<ProgramStandIn>(L"ADODB.Connection", nullptr, [this] { return NewConnection(); }));
    programs_.push_back(
        std::make_unique<ProgramStandIn>(L"ADODB.Recordset", nullptr, [this] { return NewRecordset(); }));
}

AdoStandIn::~AdoStandIn() {
    programs_.clear();
    if (initialised_) CoUninitialize();
}

void AdoStandIn::RegisterProvider() {
    programs_.push_back(std::make_unique<ProgramStandIn>(
        L"Microsoft.Jet.OLEDB.4.0", L"{6B1F2C0E-52D1-4C1B-9A70-3B1E5B7C90D4}", [this] { return NewConnection(); }));
}

ScriptedObject* AdoStandIn::NewConnection() {
    const std::shared_ptr<database::Connection> inner = databases.CreateConnection();
    auto* const object = new ScriptedObject(calls, L"Connection");
    object->Put(L"Mode", Do([inner](const Arguments& a) { inner->SetMode(InRange(a, 0, 16)); }));
    object->Method(L"Open", 0, 4, Do([inner](const Arguments& a) {
                       const auto text = [&a](std::size_t i) { return i < a.size() ? a[i].Text() : std::wstring(); };
                       inner->Open(text(0), text(1), text(2));
                   }));
    object->Method(L"Close", 0, 0, Do([inner](const Arguments&) { inner->Close(); }));
    connections_[object] = inner;
    return object;
}

ScriptedObject* AdoStandIn::NewRecordset() {
    const std::shared_ptr<Recordset> inner = databases.CreateRecordset();
    auto* const object = new ScriptedObject(calls, L"Recordset");
    object->Put(L"CursorType", Do([inner](const Arguments& a) {
                    inner->SetCursorType(static_cast<database::CursorType>(InRange(a, 0, 3)));
                }));
    object->Put(L"LockType", Do([inner](const Arguments& a) {
                    inner->SetLockType(static_cast<database::LockType>(InRange(a, 1, 4)));
                }));
    object->Method(L"Open", 0, 5, Do([inner, this](const Arguments& a) {
                       if (a.size() < 2 || a[1].Type() != VT_DISPATCH) RefuseArguments();
                       const auto connection = connections_[a[1].Get().pdispVal].lock();
                       if (!connection) RefuseArguments();
                       inner->Open(a[0].Text(), *connection);
                   }));
    const auto forward = [&](const wchar_t* name, std::size_t most, void (Recordset::*method)()) {
        object->Method(name, 0, most, Do([inner, method](const Arguments&) { (*inner.*method)(); }));
    };
    forward(L"Close", 0, &Recordset::Close);
    forward(L"MoveFirst", 0, &Recordset::MoveFirst);
    forward(L"MoveLast", 0, &Recordset::MoveLast);
    forward(L"MoveNext", 0, &Recordset::MoveNext);
    forward(L"AddNew", 2, &Recordset::AddNew);
    forward(L"Update", 2, &Recordset::Update);
    forward(L"UpdateBatch", 1, &Recordset::UpdateBatch);
    object->Get(L"BOF", [inner](const Arguments&) { return Variant(inner->AtBeginning()); });
    object->Get(L"EOF", [inner](const Arguments&) { return Variant(inner->AtEnd()); });
    object->Get(L"RecordCount",
                [inner](const Arguments&) { return Variant(static_cast<std::int32_t>(inner->RecordCount())); });
    object->Method(L"Find", 1, 4, Do([inner](const Arguments& a) { inner->Find(a[0].Text()); }));
    const auto field = [inner, this](const Arguments& a) {
        inner->AtEnd(); // a closed record set has no fields
        const std::wstring name = a.at(0).Text();
        auto* const one = new ScriptedObject(calls, L"Recordset.Fields(" + name + L")");
        one->Get(L"Value", [inner, name](const Arguments&) { return database::ado::ToVariant(inner->Field(name)); });
        one->Put(L"Value",
                 Do([inner, name](const Arguments& v) { inner->SetField(name, database::ado::FromVariant(v[0])); }));
        return Returned(one);
    };
    object->Get(L"Fields", [field, this](const Arguments&) {
        return Returned(&(new ScriptedObject(calls, L""))->Get(L"Item", field));
    });
    return object;
}

} // namespace quorvex::testing
