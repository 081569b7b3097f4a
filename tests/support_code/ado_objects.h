#pragma once

#include "support_code/ado_object.h"

namespace quorvex::testing {

class AdoRecordsetObject;

class AdoConnectionObject final : public AdoObject<AdoConnectionObject> {
  public:
    explicit AdoConnectionObject(AdoStandIn& world);
    ~AdoConnectionObject();
    static std::span<const AdoMember<AdoConnectionObject>> Members();

    AdoFile* File() { return file_; } // nothing while closed
    std::set<AdoRecordsetObject*> recordsets;

  private:
    using Variant = support::Variant;
    Variant GetMode(const AdoArguments&) { return mode_; }
    Variant PutMode(const AdoArguments& arguments);
    Variant Open(const AdoArguments& arguments);
    Variant Close(const AdoArguments&);

    std::int32_t mode_ = 0;
    AdoFile* file_ = nullptr;
};

class AdoRecordsetObject final : public AdoObject<AdoRecordsetObject> {
  public:
    explicit AdoRecordsetObject(AdoStandIn& world) : AdoObject(world) {}
    ~AdoRecordsetObject();
    static std::span<const AdoMember<AdoRecordsetObject>> Members();

    bool IsOpen() const { return table_ != nullptr; }
    void Drop(); // closes without a word, as the end of its connection does
    std::size_t ColumnNamed(const std::wstring& name) const;
    const std::wstring& ColumnName(std::size_t column) const { return table_->columns[column].name; }
    localdata::Value ValueAt(std::size_t column);
    void SetValueAt(std::size_t column, const support::Variant& value);
    void NoteField(const std::wstring& call) { Note(call); }

  private:
    using Variant = support::Variant;
    Variant GetCursorType(const AdoArguments&) { return cursorType_; }
    Variant PutCursorType(const AdoArguments& arguments);
    Variant GetLockType(const AdoArguments&) { return lockType_; }
    Variant PutLockType(const AdoArguments& arguments);
    Variant Open(const AdoArguments& arguments);
    Variant Close(const AdoArguments&);
    Variant GetBof(const AdoArguments&);
    Variant GetEof(const AdoArguments&);
    Variant MoveFirst(const AdoArguments&);
    Variant MoveLast(const AdoArguments&);
    Variant MoveNext(const AdoArguments&);
    Variant RecordCount(const AdoArguments&);
    Variant Find(const AdoArguments& arguments);
    Variant Fields(const AdoArguments&);
    Variant AddNew(const AdoArguments&);
    Variant Update(const AdoArguments&);
    Variant UpdateBatch(const AdoArguments&);

    void RequireOpen() const;
    void RequireRows() const;
    void RequireCurrentRow() const;
    void RequireWritable() const;
    void WritePending();
    std::int64_t Count() const { return static_cast<std::int64_t>(rows_.size()); }
    AdoRow& CurrentRow() { return table_->rows[rows_[static_cast<std::size_t>(at_)]]; }

    std::int32_t cursorType_ = 0;
    std::int32_t lockType_ = 1;
    AdoConnectionObject* connection_ = nullptr; // a reference is held while open
    AdoTable snapshot_;                         // what a static cursor shows
    AdoTable* table_ = nullptr;                 // the snapshot, or the file's own table
    std::vector<std::size_t> rows_;
    std::int64_t at_ = 0; // -1 before the first row, Count() behind the last
    bool adding_ = false;
    std::optional<AdoRow> pending_;
};

} // namespace quorvex::testing
