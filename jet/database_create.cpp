#include "database_state.h"
#include "format/text_codec.h"
#include "tables/table_maker.h"
#include "tables/table_writer.h"

#include <algorithm>
#include <chrono>

namespace jet {
namespace {

constexpr PageNo kAccessTablePage = 3;
constexpr std::int32_t kRootContainer = 0x0F000000;
constexpr std::int32_t kDatabasesContainer = 0x0F000002;
constexpr std::int32_t kRelationshipsContainer = 0x0F000003;
constexpr std::int32_t kDatabaseObject = 0x10000000;
constexpr std::int32_t kAllRights = 0x000FFFFF;

// Values for a row of a system table, by column name.
using NamedValues = std::vector<std::pair<const char16_t*, Value>>;

std::vector<Assignment> Assign(const TableDef& def, const NamedValues& values) {
    std::vector<Assignment> out;
    for (const auto& [name, value] : values) {
        const auto column = def.FindColumn(name);
        if (!column) ThrowCorrupt("a system table lacks a column", def.page);
        out.push_back({*column, value});
    }
    return out;
}

DateTime Now() {
    using Days = std::chrono::duration<double, std::ratio<86400>>;
    constexpr double kUnixEpoch = 25569;
    return {std::chrono::duration_cast<Days>(std::chrono::system_clock::now().time_since_epoch()).count() + kUnixEpoch};
}

Value ValueOf(const Row& row, const TableDef& def, const char16_t* name) {
    const auto column = def.FindColumn(name);
    return column ? row.Get(*column) : Value();
}

} // namespace

Database Database::Create(const Path& path, std::u16string_view password, const OpenOptions& options) {
    Storage& storage = StorageOf(options);
    const double created = Now().days;
    const Bytes pages = MakeEmptyDatabase(created, password);
    auto state = std::make_unique<State>(Pager::Create(storage, path, pages, PagerOptions(options, true)));
    try {
        state->pager->Begin();
        state->FillNewCatalog(created);
        state->pager->Commit();
    } catch (const Error&) {
        state.reset();
        storage.Remove(path);
        storage.Remove(Journal::PathFor(path));
        throw;
    }
    return Database(std::move(state));
}

void Database::State::FillNewCatalog(double created) {
    const SecurityIds ids = NewFileSecurityIds();
    struct Object {
        std::int32_t id;
        std::int32_t parent;
        const char16_t* name;
        std::int32_t type;
        bool byAdministrator;
    };
    constexpr Object objects[] = {
        {kTablesContainer, kRootContainer, u"Tables", 3, false},
        {kDatabasesContainer, kRootContainer, u"Databases", 3, false},
        {kRelationshipsContainer, kRootContainer, u"Relationships", 3, false},
        {kDatabaseObject, kDatabasesContainer, u"MSysDb", 2, true},
        {2, kTablesContainer, u"MSysObjects", 1, false},
        {3, kTablesContainer, u"MSysACEs", 1, false},
        {4, kTablesContainer, u"MSysQueries", 1, false},
        {5, kTablesContainer, u"MSysRelationships", 1, false},
    };
    const auto systemFlag = static_cast<std::int32_t>(0x80000000U);
    Table objectTable = SystemTable(kCatalogPage);
    for (const Object& object : objects) {
        objectTable.Insert(
            Assign(objectTable.definition(), {{u"Id", object.id},
                                              {u"ParentId", object.parent},
                                              {u"Name", std::u16string(object.name)},
                                              {u"Type", object.type},
                                              {u"DateCreate", DateTime{created}},
                                              {u"DateUpdate", DateTime{created}},
                                              {u"Owner", object.byAdministrator ? ids.administrator : ids.engine},
                                              {u"Flags", systemFlag}}));
    }
    struct Right {
        std::int32_t object;
        const Bytes& id;
        std::int32_t rights;
        bool inheritable;
    };
    // As in the empty files of the format's own engine.
    const Right rights[] = {
        {2, ids.administrator, 0x60000, false},
        {3, ids.administrator, 0x60000, false},
        {4, ids.administrator, 0x60000, false},
        {5, ids.administrator, 0xE0000, false},
        {kTablesContainer, ids.creator, 0xF00FE, true},
        {kTablesContainer, ids.administrator, 0x60001, false},
        {kRelationshipsContainer, ids.creator, 0xF00FE, true},
        {kRelationshipsContainer, ids.administrator, 0x60001, false},
        {kDatabasesContainer, ids.administrator, 0x60000, false},
        {kDatabaseObject, ids.administrator, 0x6000E, false},
        {kDatabaseObject, ids.users, 0xE, false},
        {4, ids.users, 0x14, false},
        {5, ids.users, 0x14, false},
        {2, ids.users, 0x14, false},
        {kTablesContainer, ids.users, 0xFFEFF, true},
        {kRelationshipsContainer, ids.users, 0xFFFFF, true},
    };
    Table access = SystemTable(kAccessTablePage);
    for (const Right& right : rights) {
        access.Insert(Assign(access.definition(), {{u"ObjectId", right.object},
                                                   {u"SID", right.id},
                                                   {u"ACM", right.rights},
                                                   {u"FInheritable", right.inheritable}}));
    }
}

Table Database::CreateTable(const TableSpec& wanted) {
    State& state = *state_;
    if (state.GetCatalog().FindTable(wanted.name)) {
        throw Error(ErrorCode::kTableExists, "The database already has a table " + ToUtf8(wanted.name));
    }
    Statement statement(*state.pager);
    const PageNo page = MakeTable(*state.pager, *state.allocator, wanted);
    state.RegisterTable(wanted.name, page);
    statement.Done();
    return OpenTable(wanted.name);
}

/// Enters a table into the catalog, with the owner of the database and the rights that the container hands down.
void Database::State::RegisterTable(const std::u16string& name, PageNo page) {
    const auto id = static_cast<std::int32_t>(page);
    const Table objectTable = SystemTable(kCatalogPage);
    Value owner;
    Cursor objects = objectTable.Where(ParseConditions(u"[Name]='MSysDb'"));
    if (objects.Next()) owner = ValueOf(objects.Current(), objectTable.definition(), u"Owner");
    const DateTime now = Now();
    const auto def = std::make_shared<TableDef>(objectTable.definition());
    TableWriter(pager, *allocator, def)
        .Insert(Assign(*def, {{u"Id", id},
                              {u"ParentId", kTablesContainer},
                              {u"Name", name},
                              {u"Type", 1},
                              {u"DateCreate", now},
                              {u"DateUpdate", now},
                              {u"Owner", owner},
                              {u"Flags", 0}}));
    const Table access = SystemTable(kAccessTablePage);
    std::vector<Value> users;
    // The container of tables, by its number.
    Cursor rights = access.Where(ParseConditions(u"[ObjectId]=251658241"));
    while (rights.Next()) {
        Value user = ValueOf(rights.Current(), access.definition(), u"SID");
        if (!IsNull(user) && std::find(users.begin(), users.end(), user) == users.end())
            users.push_back(std::move(user));
    }
    const auto accessDef = std::make_shared<TableDef>(access.definition());
    for (const Value& user : users) {
        TableWriter(pager, *allocator, accessDef)
            .Insert(Assign(*accessDef,
                           {{u"ObjectId", id}, {u"SID", user}, {u"ACM", kAllRights}, {u"FInheritable", false}}));
    }
}

} // namespace jet
