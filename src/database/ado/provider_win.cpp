#include "database/ado/provider_win.h"

#include "database/ado/value_win.h"
#include "database/connection_string.h"
#include "database/jet/jet_translation.h"
#include "jet/database.h"
#include "support/automation_object_win.h"
#include "support/error.h"
#include "support/files.h"

#include <chrono>
#include <map>
#include <objbase.h>
#include <thread>

namespace quorvex::database::ado {
namespace {

using support::AutomationObject;
using support::Error;

constexpr std::chrono::milliseconds kOpenPause{25};
constexpr wchar_t kConnectionClass[] = L"ADODB.Connection";
constexpr wchar_t kRecordsetClass[] = L"ADODB.Recordset";
constexpr wchar_t kJetProvider[] = L"Microsoft.Jet.OLEDB.4.0";

class AdoConnection final : public Connection {
  public:
    AdoConnection() : object_(AutomationObject::Create(kConnectionClass)) {}

    void SetMode(int mode) override { object_.Put(L"Mode", mode); }
    void Open(const std::wstring& connectionString, const std::wstring& user, const std::wstring& password) override {
        const std::wstring file = DataSource(connectionString);
        const jet::Path path = support::NativePath(file);
        // This layer does not know of the journal that an interrupted update leaves.
        Translated(file, [&] { jet::Database::Recover(path); });
        const auto deadline = std::chrono::steady_clock::now() + jet::OpenOptions{}.wait;
        for (;;) {
            try {
                object_.Call(L"Open", {connectionString, user, password});
                return;
            } catch (const Error&) {
                // An update may have the file for a moment.
                if (std::chrono::steady_clock::now() >= deadline || !jet::Database::IsHeld(path)) throw;
            }
            std::this_thread::sleep_for(kOpenPause);
        }
    }
    void Close() override { object_.Call(L"Close"); }

    const AutomationObject& Object() const { return object_; }

  private:
    AutomationObject object_;
};

class AdoRecordset final : public Recordset {
  public:
    AdoRecordset() : object_(AutomationObject::Create(kRecordsetClass)) {}

    void SetCursorType(CursorType type) override { object_.Put(L"CursorType", static_cast<std::int32_t>(type)); }
    void SetLockType(LockType type) override { object_.Put(L"LockType", static_cast<std::int32_t>(type)); }

    void Open(const std::wstring& query, Connection& connection) override {
        const auto* const own = dynamic_cast<const AdoConnection*>(&connection);
        if (own == nullptr) throw Error(support::kErrorInternal, L"The connection belongs to another database engine");
        fields_.clear();
        object_.Call(L"Open", {query, own->Object().Get()});
    }
    void Close() override {
        fields_.clear();
        object_.Call(L"Close");
    }

    bool AtBeginning() override { return object_.Property(L"BOF").Bool(); }
    bool AtEnd() override { return object_.Property(L"EOF").Bool(); }
    void MoveFirst() override { object_.Call(L"MoveFirst"); }
    void MoveLast() override { object_.Call(L"MoveLast"); }
    void MoveNext() override { object_.Call(L"MoveNext"); }
    long RecordCount() override { return object_.Property(L"RecordCount").Int(); }
    void Find(const std::wstring& criterion) override { object_.Call(L"Find", {criterion}); }

    Value Field(const std::wstring& column) override { return FromVariant(FieldObject(column).Property(L"Value")); }
    void SetField(const std::wstring& column, const Value& value) override {
        FieldObject(column).Put(L"Value", ToVariant(value));
    }
    void AddNew() override { object_.Call(L"AddNew"); }
    void Update() override { object_.Call(L"Update"); }
    void UpdateBatch() override { object_.Call(L"UpdateBatch"); }

  private:
    // A field object stands for its column in whichever row is current, so each is fetched once per opening.
    const AutomationObject& FieldObject(const std::wstring& column) {
        const auto known = fields_.find(column);
        if (known != fields_.end()) return known->second;
        return fields_.emplace(column, object_.Object(L"Fields").Object(L"Item", {column})).first->second;
    }

    AutomationObject object_;
    std::map<std::wstring, AutomationObject> fields_;
};

bool CanCreate(const wchar_t* progId) {
    CLSID classId{};
    if (FAILED(CLSIDFromProgID(progId, &classId))) return false;
    void* object = nullptr;
    if (FAILED(CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object)) || object == nullptr) {
        return false;
    }
    static_cast<IUnknown*>(object)->Release();
    return true;
}

} // namespace

bool AdoAvailable() {
    if (!CanCreate(kJetProvider)) return false;
    try {
        return AutomationObject::Create(kConnectionClass).HasMember(L"Open") && CanCreate(kRecordsetClass);
    } catch (const Error&) {
        return false;
    }
}

std::unique_ptr<Connection> AdoProvider::CreateConnection() {
    return std::make_unique<AdoConnection>();
}

std::unique_ptr<Recordset> AdoProvider::CreateRecordset() {
    return std::make_unique<AdoRecordset>();
}

std::wstring AdoProvider::Name() const {
    return L"ADO (Microsoft.Jet.OLEDB.4.0)";
}

} // namespace quorvex::database::ado
