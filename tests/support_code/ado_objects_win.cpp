#include "support_code/ado_objects.h"

#include <array>

namespace quorvex::testing {
namespace {

using support::Variant;

// A column of a record set, whatever its current row.
class AdoFieldObject final : public AdoObject<AdoFieldObject> {
  public:
    AdoFieldObject(AdoStandIn& world, AdoRecordsetObject& recordset, std::wstring name)
        : AdoObject(world), recordset_(recordset), name_(std::move(name)) {
        recordset_.AddRef();
    }
    ~AdoFieldObject() { recordset_.Release(); }

    std::wstring Name() const { return L"Recordset.Fields(" + name_ + L")"; }
    static std::span<const AdoMember<AdoFieldObject>> Members() {
        static const std::array<AdoMember<AdoFieldObject>, 2> members = {{
            {L"Value", DISPATCH_PROPERTYGET, 0, 0, &AdoFieldObject::GetValue},
            {L"Value", DISPATCH_PROPERTYPUT, 1, 1, &AdoFieldObject::PutValue},
        }};
        return members;
    }

  private:
    Variant GetValue(const AdoArguments&) { return database::ado::ToVariant(recordset_.Inner().Field(name_)); }
    Variant PutValue(const AdoArguments& arguments) {
        recordset_.Inner().SetField(name_, database::ado::FromVariant(arguments[0]));
        return {};
    }

    AdoRecordsetObject& recordset_;
    std::wstring name_;
};

class AdoFieldsObject final : public AdoObject<AdoFieldsObject> {
  public:
    AdoFieldsObject(AdoStandIn& world, AdoRecordsetObject& recordset) : AdoObject(world), recordset_(recordset) {
        recordset_.AddRef();
    }
    ~AdoFieldsObject() { recordset_.Release(); }

    static std::wstring Name() { return {}; } // each field notes its own calls
    static std::span<const AdoMember<AdoFieldsObject>> Members() {
        static const std::array<AdoMember<AdoFieldsObject>, 1> members = {
            {{L"Item", DISPATCH_PROPERTYGET, 1, 1, &AdoFieldsObject::Item}}};
        return members;
    }

  private:
    Variant Item(const AdoArguments& arguments) {
        recordset_.Inner().AtEnd(); // a closed record set has no fields
        auto* const field = new AdoFieldObject(world_, recordset_, arguments[0].Text());
        Variant result(field);
        field->Release();
        return result;
    }

    AdoRecordsetObject& recordset_;
};

} // namespace

std::span<const AdoMember<AdoConnectionObject>> AdoConnectionObject::Members() {
    using Me = AdoConnectionObject;
    static const std::array<AdoMember<Me>, 3> members = {{
        {L"Mode", DISPATCH_PROPERTYPUT, 1, 1, &Me::PutMode},
        {L"Open", DISPATCH_METHOD, 0, 4, &Me::Open},
        {L"Close", DISPATCH_METHOD, 0, 0, &Me::Close},
    }};
    return members;
}

Variant AdoConnectionObject::PutMode(const AdoArguments& arguments) {
    const std::int32_t mode = arguments[0].Int();
    if (mode < 0 || mode > 16) RefuseArguments();
    inner_->SetMode(mode);
    return {};
}

Variant AdoConnectionObject::Open(const AdoArguments& arguments) {
    const auto text = [&](std::size_t i) { return i < arguments.size() ? arguments[i].Text() : std::wstring(); };
    inner_->Open(text(0), text(1), text(2));
    return {};
}

AdoRecordsetObject::~AdoRecordsetObject() {
    inner_.reset();
    LetGo();
}

void AdoRecordsetObject::LetGo() {
    if (connection_ != nullptr) std::exchange(connection_, nullptr)->Release();
}

std::span<const AdoMember<AdoRecordsetObject>> AdoRecordsetObject::Members() {
    using Me = AdoRecordsetObject;
    static const std::array<AdoMember<Me>, 15> members = {{
        {L"CursorType", DISPATCH_PROPERTYPUT, 1, 1, &Me::PutCursorType},
        {L"LockType", DISPATCH_PROPERTYPUT, 1, 1, &Me::PutLockType},
        {L"Open", DISPATCH_METHOD, 0, 5, &Me::Open},
        {L"Close", DISPATCH_METHOD, 0, 0, &Me::Close},
        {L"BOF", DISPATCH_PROPERTYGET, 0, 0, &Me::GetBof},
        {L"EOF", DISPATCH_PROPERTYGET, 0, 0, &Me::GetEof},
        {L"MoveFirst", DISPATCH_METHOD, 0, 0, &Me::Forward<&database::Recordset::MoveFirst>},
        {L"MoveLast", DISPATCH_METHOD, 0, 0, &Me::Forward<&database::Recordset::MoveLast>},
        {L"MoveNext", DISPATCH_METHOD, 0, 0, &Me::Forward<&database::Recordset::MoveNext>},
        {L"RecordCount", DISPATCH_PROPERTYGET, 0, 0, &Me::RecordCount},
        {L"Find", DISPATCH_METHOD, 1, 4, &Me::Find},
        {L"Fields", DISPATCH_PROPERTYGET, 0, 0, &Me::Fields},
        {L"AddNew", DISPATCH_METHOD, 0, 2, &Me::Forward<&database::Recordset::AddNew>},
        {L"Update", DISPATCH_METHOD, 0, 2, &Me::Forward<&database::Recordset::Update>},
        {L"UpdateBatch", DISPATCH_METHOD, 0, 1, &Me::Forward<&database::Recordset::UpdateBatch>},
    }};
    return members;
}

Variant AdoRecordsetObject::PutCursorType(const AdoArguments& arguments) {
    const std::int32_t type = arguments[0].Int();
    if (type < 0 || type > 3) RefuseArguments();
    inner_->SetCursorType(static_cast<database::CursorType>(type));
    return {};
}

Variant AdoRecordsetObject::PutLockType(const AdoArguments& arguments) {
    const std::int32_t type = arguments[0].Int();
    if (type < 1 || type > 4) RefuseArguments();
    inner_->SetLockType(static_cast<database::LockType>(type));
    return {};
}

Variant AdoRecordsetObject::Open(const AdoArguments& arguments) {
    if (arguments.size() < 2 || arguments[1].Type() != VT_DISPATCH) RefuseArguments();
    for (AdoConnectionObject* const connection : world_.connections) {
        if (static_cast<IDispatch*>(connection) != arguments[1].Get().pdispVal) continue;
        inner_->Open(arguments[0].Text(), connection->Inner());
        LetGo();
        connection_ = connection;
        connection_->AddRef();
        return {};
    }
    RefuseArguments();
}

Variant AdoRecordsetObject::Close(const AdoArguments&) {
    inner_->Close();
    LetGo();
    return {};
}

Variant AdoRecordsetObject::Find(const AdoArguments& arguments) {
    inner_->Find(arguments[0].Text());
    return {};
}

Variant AdoRecordsetObject::Fields(const AdoArguments&) {
    auto* const fields = new AdoFieldsObject(world_, *this);
    Variant result(fields);
    fields->Release();
    return result;
}

} // namespace quorvex::testing
