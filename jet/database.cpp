#include "database_state.h"

#include "format/header.h"
#include "format/text_codec.h"
#include "insides.h"

#include <algorithm>

namespace jet {

Storage& StorageOf(const OpenOptions& options) {
    return options.storage ? *options.storage : SystemStorage();
}

Pager::Options PagerOptions(const OpenOptions& options, bool writable) {
    constexpr std::size_t kFewestCachePages = 16;
    Pager::Options out;
    out.writable = writable;
    out.yields = options.yields;
    out.wait = options.wait;
    out.cachePages = std::max(options.cachePages, kFewestCachePages);
    out.spillPages = options.spillPages;
    return out;
}

const std::shared_ptr<Pager>& Insides::PagerOf(const Database& database) {
    return database.state_->pager;
}

Database::State::State(std::shared_ptr<Pager> opened)
    : pager(std::move(opened)),
      allocator(std::make_shared<Allocator>(*pager, [held = pager] { return ClaimedPages(held); })) {}

const Catalog& Database::State::GetCatalog() {
    if (!catalog) catalog.emplace(pager);
    return *catalog;
}

Table Database::State::SystemTable(PageNo page) const {
    return Table(pager, allocator, std::make_shared<TableDef>(ReadTableDef(*pager, page)));
}

Database::Database(std::unique_ptr<State> state) : state_(std::move(state)) {}
Database::Database(Database&& other) noexcept = default;
Database& Database::operator=(Database&& other) noexcept = default;
Database::~Database() = default;

Database Database::Open(const Path& path, std::u16string_view password, const OpenOptions& options) {
    auto pager = Pager::Open(StorageOf(options), path, PagerOptions(options, options.writable));
    CheckHeader(*pager, password);
    return Database(std::make_unique<State>(std::move(pager)));
}

void Database::Recover(const Path& path, const OpenOptions& options) {
    Storage& storage = StorageOf(options);
    const Path journal = Journal::PathFor(path);
    if (!storage.Exists(journal)) return;
    // An invalid one is no reason to disturb those who have the file open.
    if (!Journal::LooksValid(*storage.Open(journal, OpenMode::kSideFileRead))) return;
    OpenDatabaseFile(storage, path, false, options.wait);
}

bool Database::IsHeld(const Path& path, const OpenOptions& options) {
    try {
        StorageOf(options).Open(path, OpenMode::kReadDenyWrite);
    } catch (const Error& error) {
        return error.code() == ErrorCode::kInUse;
    }
    return false;
}

Table Database::OpenTable(std::u16string_view name) {
    State& state = *state_;
    if (state.rollbacks != state.pager->rollbacks()) {
        state.tables.clear();
        state.rollbacks = state.pager->rollbacks();
    }
    auto& def = state.tables[FoldName(name)];
    if (!def) {
        const auto page = state.GetCatalog().FindTable(name);
        if (!page) throw Error(ErrorCode::kNoSuchTable, "The database has no table " + ToUtf8(name));
        auto read = std::make_shared<TableDef>(ReadTableDef(*state.pager, *page));
        read->name = name;
        def = std::move(read);
    }
    return Table(state.pager, state.allocator, def);
}

std::vector<std::u16string> Database::TableNames() {
    return state_->GetCatalog().TableNames();
}

Cursor Database::Select(std::u16string_view text) {
    return Select(ParseQuery(text));
}

Cursor Database::Select(const Query& query) {
    return OpenTable(query.table).Where(query.conditions);
}

void Database::Begin() {
    state_->pager->Begin();
}

void Database::Commit() {
    state_->pager->Commit();
}

void Database::RollBack() {
    state_->pager->RollBack();
}

void Database::Close() {
    state_->pager->Close();
}

std::uint64_t Database::PagesRead() const {
    return state_->pager->pagesRead();
}

} // namespace jet
