#include "support_code/ado_objects.h"

#include "localdata/ado/value_win.h"

#include <array>

namespace quorvex::testing {
namespace {

using localdata::Value;
using localdata::ado::FromVariant;
using localdata::ado::ToVariant;
using support::Variant;

constexpr std::int32_t kForwardOnly = 0;
constexpr std::int32_t kDynamic = 2;
constexpr std::int32_t kStatic = 3;
constexpr std::int32_t kReadOnly = 1;

class AdoFieldObject final : public AdoObject<AdoFieldObject> {
  public:
    AdoFieldObject(AdoStandIn& world, AdoRecordsetObject& recordset, std::size_t column)
        : AdoObject(world), recordset_(recordset), column_(column), name_(recordset.ColumnName(column)) {
        recordset_.AddRef();
    }
    ~AdoFieldObject() { recordset_.Release(); }

    static std::span<const AdoMember<AdoFieldObject>> Members() {
        static const std::array<AdoMember<AdoFieldObject>, 2> members = {{
            {L"Value", DISPATCH_PROPERTYGET, 0, 0, &AdoFieldObject::GetValue},
            {L"Value", DISPATCH_PROPERTYPUT, 1, 1, &AdoFieldObject::PutValue},
        }};
        return members;
    }

  private:
    Variant GetValue(const AdoArguments&) {
        Note(L"Recordset.Fields(" + name_ + L").Value");
        return ToVariant(recordset_.ValueAt(column_));
    }
    Variant PutValue(const AdoArguments& arguments) {
        Note(L"Recordset.Fields(" + name_ + L").Value = " + (arguments[0].IsNull() ? L"Null" : arguments[0].Text()));
        recordset_.SetValueAt(column_, arguments[0]);
        return {};
    }

    AdoRecordsetObject& recordset_;
    std::size_t column_;
    std::wstring name_;
};

class AdoFieldsObject final : public AdoObject<AdoFieldsObject> {
  public:
    AdoFieldsObject(AdoStandIn& world, AdoRecordsetObject& recordset) : AdoObject(world), recordset_(recordset) {
        recordset_.AddRef();
    }
    ~AdoFieldsObject() { recordset_.Release(); }

    static std::span<const AdoMember<AdoFieldsObject>> Members() {
        static const std::array<AdoMember<AdoFieldsObject>, 1> members = {
            {{L"Item", DISPATCH_PROPERTYGET, 1, 1, &AdoFieldsObject::Item}}};
        return members;
    }

  private:
    Variant Item(const AdoArguments& arguments) {
        if (!recordset_.IsOpen()) RefuseItem(); // a closed record set has no fields
        auto* const field = new AdoFieldObject(world_, recordset_, recordset_.ColumnNamed(arguments[0].Text()));
        Variant result(field);
        field->Release();
        return result;
    }

    AdoRecordsetObject& recordset_;
};

// The value as the column's type holds it, converted where automation can.
Value Fitting(ColumnType type, const Variant& value) {
    if (value.IsNull()) return {};
    try {
        if (type == ColumnType::Text) return value.Text();
        if (type == ColumnType::Long) return value.Int();
        return value.Number();
    } catch (const support::Error&) {
        Refuse(3421, L"Application uses a value of the wrong type for the current operation.");
    }
}

} // namespace

AdoRecordsetObject::~AdoRecordsetObject() {
    Drop();
}

std::span<const AdoMember<AdoRecordsetObject>> AdoRecordsetObject::Members() {
    using Me = AdoRecordsetObject;
    static const std::array<AdoMember<Me>, 17> members = {{
        {L"CursorType", DISPATCH_PROPERTYGET, 0, 0, &Me::GetCursorType},
        {L"CursorType", DISPATCH_PROPERTYPUT, 1, 1, &Me::PutCursorType},
        {L"LockType", DISPATCH_PROPERTYGET, 0, 0, &Me::GetLockType},
        {L"LockType", DISPATCH_PROPERTYPUT, 1, 1, &Me::PutLockType},
        {L"Open", DISPATCH_METHOD, 0, 5, &Me::Open},
        {L"Close", DISPATCH_METHOD, 0, 0, &Me::Close},
        {L"BOF", DISPATCH_PROPERTYGET, 0, 0, &Me::GetBof},
        {L"EOF", DISPATCH_PROPERTYGET, 0, 0, &Me::GetEof},
        {L"MoveFirst", DISPATCH_METHOD, 0, 0, &Me::MoveFirst},
        {L"MoveLast", DISPATCH_METHOD, 0, 0, &Me::MoveLast},
        {L"MoveNext", DISPATCH_METHOD, 0, 0, &Me::MoveNext},
        {L"RecordCount", DISPATCH_PROPERTYGET, 0, 0, &Me::RecordCount},
        {L"Find", DISPATCH_METHOD, 1, 4, &Me::Find},
        {L"Fields", DISPATCH_PROPERTYGET, 0, 0, &Me::Fields},
        {L"AddNew", DISPATCH_METHOD, 0, 2, &Me::AddNew},
        {L"Update", DISPATCH_METHOD, 0, 2, &Me::Update},
        {L"UpdateBatch", DISPATCH_METHOD, 0, 1, &Me::UpdateBatch},
    }};
    return members;
}

void AdoRecordsetObject::Drop() {
    if (table_ == nullptr) return;
    table_ = nullptr;
    pending_.reset();
    adding_ = false;
    connection_->recordsets.erase(this);
    std::exchange(connection_, nullptr)->Release();
}

void AdoRecordsetObject::RequireOpen() const {
    if (!IsOpen()) RefuseClosed();
}

void AdoRecordsetObject::RequireRows() const {
    RequireOpen();
    if (rows_.empty()) {
        Refuse(3021,
               L"Either BOF or EOF is True, or the current record has been deleted. Requested operation requires a "
               L"current record.");
    }
}

void AdoRecordsetObject::RequireCurrentRow() const {
    RequireOpen();
    if (at_ < 0 || at_ >= Count()) {
        Refuse(3021,
               L"Either BOF or EOF is True, or the current record has been deleted. Requested operation requires a "
               L"current record.");
    }
}

void AdoRecordsetObject::RequireWritable() const {
    RequireOpen();
    if (lockType_ == kReadOnly || cursorType_ == kStatic) {
        Refuse(3251,
               L"Current Recordset does not support updating. This may be a limitation of the provider, or of the "
               L"selected locktype.");
    }
}

Variant AdoRecordsetObject::PutCursorType(const AdoArguments& arguments) {
    Note(L"Recordset.CursorType = " + arguments[0].Text());
    if (IsOpen()) RefuseOpen();
    const std::int32_t type = arguments[0].Int();
    if (type < kForwardOnly || type > kStatic) RefuseArguments();
    cursorType_ = type;
    return {};
}

Variant AdoRecordsetObject::PutLockType(const AdoArguments& arguments) {
    Note(L"Recordset.LockType = " + arguments[0].Text());
    if (IsOpen()) RefuseOpen();
    const std::int32_t type = arguments[0].Int();
    if (type < kReadOnly || type > 4) RefuseArguments();
    lockType_ = type;
    return {};
}

Variant AdoRecordsetObject::Open(const AdoArguments& arguments) {
    if (arguments.size() < 2 || arguments[1].Type() != VT_DISPATCH) RefuseArguments();
    Note(L"Recordset.Open " + arguments[0].Text());
    if (IsOpen()) RefuseOpen();
    for (AdoConnectionObject* const connection : world_.connections) {
        if (static_cast<IDispatch*>(connection) != arguments[1].Get().pdispVal) continue;
        if (connection->File() == nullptr) break;
        AdoSelection selection = Select(*connection->File(), arguments[0].Text());
        table_ = selection.table;
        if (cursorType_ == kStatic) {
            snapshot_ = *selection.table;
            table_ = &snapshot_;
        }
        rows_ = std::move(selection.rows);
        at_ = 0;
        connection_ = connection;
        connection_->AddRef();
        connection_->recordsets.insert(this);
        return {};
    }
    Refuse(3709,
           L"The connection cannot be used to perform this operation. It is either closed or invalid in this context.");
}

Variant AdoRecordsetObject::Close(const AdoArguments&) {
    Note(L"Recordset.Close");
    RequireOpen();
    if (pending_) Refuse(3219, L"Operation is not allowed in this context.");
    Drop();
    return {};
}

Variant AdoRecordsetObject::GetBof(const AdoArguments&) {
    Note(L"Recordset.BOF");
    RequireOpen();
    return rows_.empty() || at_ < 0;
}

Variant AdoRecordsetObject::GetEof(const AdoArguments&) {
    Note(L"Recordset.EOF");
    RequireOpen();
    return at_ >= Count();
}

Variant AdoRecordsetObject::MoveFirst(const AdoArguments&) {
    Note(L"Recordset.MoveFirst");
    RequireRows();
    WritePending();
    at_ = 0;
    return {};
}

Variant AdoRecordsetObject::MoveLast(const AdoArguments&) {
    Note(L"Recordset.MoveLast");
    RequireRows();
    WritePending();
    at_ = Count() - 1;
    return {};
}

Variant AdoRecordsetObject::MoveNext(const AdoArguments&) {
    Note(L"Recordset.MoveNext");
    RequireOpen();
    WritePending();
    if (at_ >= Count()) RequireCurrentRow();
    ++at_;
    return {};
}

Variant AdoRecordsetObject::RecordCount(const AdoArguments&) {
    Note(L"Recordset.RecordCount");
    RequireOpen();
    const bool countable = cursorType_ != kForwardOnly && cursorType_ != kDynamic;
    return countable ? static_cast<std::int32_t>(rows_.size()) : std::int32_t{-1};
}

Variant AdoRecordsetObject::Find(const AdoArguments& arguments) {
    Note(L"Recordset.Find " + arguments[0].Text());
    RequireCurrentRow();
    WritePending();
    const AdoCriterion criterion = ParseCriterion(*table_, arguments[0].Text());
    while (at_ < Count() && !criterion.Matches(CurrentRow())) ++at_;
    return {};
}

Variant AdoRecordsetObject::Fields(const AdoArguments&) {
    auto* const fields = new AdoFieldsObject(world_, *this);
    Variant result(fields);
    fields->Release();
    return result;
}

std::size_t AdoRecordsetObject::ColumnNamed(const std::wstring& name) const {
    const auto column = table_->ColumnAt(name);
    if (!column) RefuseItem();
    return *column;
}

Value AdoRecordsetObject::ValueAt(std::size_t column) {
    RequireOpen();
    if (pending_) return (*pending_)[column];
    RequireCurrentRow();
    return CurrentRow()[column];
}

void AdoRecordsetObject::SetValueAt(std::size_t column, const Variant& value) {
    RequireWritable();
    if (!adding_) RequireCurrentRow();
    Value fitting = Fitting(table_->columns[column].type, value);
    if (!pending_) pending_ = CurrentRow();
    (*pending_)[column] = std::move(fitting);
}

Variant AdoRecordsetObject::AddNew(const AdoArguments&) {
    Note(L"Recordset.AddNew");
    RequireWritable();
    WritePending();
    adding_ = true;
    pending_ = AdoRow(table_->columns.size());
    return {};
}

// Nothing to write is no failure, but there must be a row to which it could belong.
Variant AdoRecordsetObject::Update(const AdoArguments&) {
    Note(L"Recordset.Update");
    RequireWritable();
    if (!adding_) RequireCurrentRow();
    WritePending();
    return {};
}

Variant AdoRecordsetObject::UpdateBatch(const AdoArguments&) {
    Note(L"Recordset.UpdateBatch");
    RequireWritable();
    WritePending();
    return {};
}

void AdoRecordsetObject::WritePending() {
    if (!pending_) return;
    int& left = connection_->File()->writesUntilFull;
    if (left == 0) Refuse(-2147467259, L"The disk is full or the database has reached its maximum size.");
    if (left > 0) --left;
    if (adding_) {
        table_->rows.push_back(std::move(*pending_));
        rows_.push_back(table_->rows.size() - 1);
        at_ = Count() - 1;
    } else {
        CurrentRow() = std::move(*pending_);
    }
    adding_ = false;
    pending_.reset();
}

} // namespace quorvex::testing
