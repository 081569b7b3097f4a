#pragma once

#include "localdata/ado/value_win.h"
#include "support_code/ado_object.h"

namespace quorvex::testing {

class AdoConnectionObject final : public AdoObject<AdoConnectionObject> {
  public:
    explicit AdoConnectionObject(AdoStandIn& world) : AdoObject(world), inner_(world.databases.CreateConnection()) {
        world_.connections.insert(this);
    }
    ~AdoConnectionObject() { world_.connections.erase(this); }
    static std::span<const AdoMember<AdoConnectionObject>> Members();

    localdata::Connection& Inner() { return *inner_; }

  private:
    using Variant = support::Variant;
    Variant PutMode(const AdoArguments& arguments);
    Variant Open(const AdoArguments& arguments);
    Variant Close(const AdoArguments&);

    std::unique_ptr<localdata::Connection> inner_;
};

class AdoRecordsetObject final : public AdoObject<AdoRecordsetObject> {
  public:
    explicit AdoRecordsetObject(AdoStandIn& world) : AdoObject(world), inner_(world.databases.CreateRecordset()) {}
    ~AdoRecordsetObject();
    static std::span<const AdoMember<AdoRecordsetObject>> Members();

    localdata::Recordset& Inner() { return *inner_; }

  private:
    using Variant = support::Variant;
    Variant PutCursorType(const AdoArguments& arguments);
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
    void LetGo();

    std::unique_ptr<localdata::Recordset> inner_;
    AdoConnectionObject* connection_ = nullptr; // a reference is held while open
};

} // namespace quorvex::testing
