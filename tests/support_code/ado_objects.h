#pragma once

#include "database/ado/value_win.h"
#include "support_code/ado_object.h"

namespace quorvex::testing {

class AdoConnectionObject final : public AdoObject<AdoConnectionObject> {
  public:
    explicit AdoConnectionObject(AdoStandIn& world) : AdoObject(world), inner_(world.databases.CreateConnection()) {
        world_.connections.insert(this);
    }
    ~AdoConnectionObject() { world_.connections.erase(this); }
    static std::span<const AdoMember<AdoConnectionObject>> Members();
    static std::wstring Name() { return L"Connection"; }

    database::Connection& Inner() { return *inner_; }

  private:
    using Variant = support::Variant;
    Variant PutMode(const AdoArguments& arguments);
    Variant Open(const AdoArguments& arguments);
    Variant Close(const AdoArguments&) {
        inner_->Close();
        return {};
    }

    std::unique_ptr<database::Connection> inner_;
};

class AdoRecordsetObject final : public AdoObject<AdoRecordsetObject> {
  public:
    explicit AdoRecordsetObject(AdoStandIn& world) : AdoObject(world), inner_(world.databases.CreateRecordset()) {}
    ~AdoRecordsetObject();
    static std::span<const AdoMember<AdoRecordsetObject>> Members();
    static std::wstring Name() { return L"Recordset"; }

    database::Recordset& Inner() { return *inner_; }

  private:
    using Variant = support::Variant;
    Variant PutCursorType(const AdoArguments& arguments);
    Variant PutLockType(const AdoArguments& arguments);
    Variant Open(const AdoArguments& arguments);
    Variant Close(const AdoArguments&);
    Variant GetBof(const AdoArguments&) { return inner_->AtBeginning(); }
    Variant GetEof(const AdoArguments&) { return inner_->AtEnd(); }
    Variant RecordCount(const AdoArguments&) { return static_cast<std::int32_t>(inner_->RecordCount()); }
    Variant Find(const AdoArguments& arguments);
    Variant Fields(const AdoArguments&);
    template <void (database::Recordset::*Method)()>
    Variant Forward(const AdoArguments&) {
        (*inner_.*Method)();
        return {};
    }
    void LetGo();

    std::unique_ptr<database::Recordset> inner_;
    AdoConnectionObject* connection_ = nullptr; // a reference is held while open
};

} // namespace quorvex::testing
