#include "jet/cursor.h"

#include "format/data_page.h"
#include "format/long_value.h"
#include "format/text_codec.h"
#include "format/usage_map.h"
#include "plan.h"

namespace jet {

Row::Row(std::shared_ptr<Pager> pager, std::shared_ptr<const TableDef> def, RowId id, ByteView bytes, PageNo page)
    : pager_(std::move(pager)), def_(std::move(def)) {
    Assign(id, bytes, page);
}

void Row::Assign(RowId id, ByteView bytes, PageNo page) {
    id_ = id;
    bytes_.assign(bytes.begin(), bytes.end());
    page_ = page;
}

Value Row::Get(std::size_t position) const {
    const Column& column = def_->columns.at(position);
    const RowView view(*def_, bytes_, page_);
    if (column.type == ColumnType::kBoolean) return view.Flag(column);
    const auto cell = view.Cell(column);
    if (!cell) return {};
    if (!column.IsLong()) return DecodeCell(column, *cell, page_);
    if (cell->empty()) return {};
    Bytes value = ReadLongValue(*pager_, *cell, page_);
    if (column.type == ColumnType::kOle) return value;
    return DecodeText(value);
}

std::optional<ByteView> Row::Stored(std::size_t position) const {
    return RowView(*def_, bytes_, page_).Cell(def_->columns.at(position));
}

bool Row::IsFlagSet(std::size_t position) const {
    return RowView(*def_, bytes_, page_).Flag(def_->columns.at(position));
}

struct Cursor::State {
    std::shared_ptr<Pager> pager;
    std::shared_ptr<const TableDef> def;
    std::vector<BoundCondition> conditions;
    bool useIndex = false;
    std::vector<RowId> rows;   ///< by index
    std::vector<PageNo> pages; ///< by scan
    std::size_t place = 0;
    unsigned slot = 0;
    std::optional<DataPage> page;
    Row row;
};

Cursor::Cursor(std::shared_ptr<Pager> pager, std::shared_ptr<const TableDef> def,
               const std::vector<Condition>& conditions)
    : state_(std::make_unique<State>()) {
    state_->pager = std::move(pager);
    state_->def = std::move(def);
    state_->row.pager_ = state_->pager;
    state_->row.def_ = state_->def;
    for (const Condition& condition : conditions) state_->conditions.emplace_back(*state_->def, condition);
    Rewind();
}

Cursor::Cursor(const Cursor& other) : state_(std::make_unique<State>(*other.state_)) {}
Cursor::Cursor(Cursor&& other) noexcept = default;
Cursor& Cursor::operator=(Cursor other) noexcept {
    state_ = std::move(other.state_);
    return *this;
}
Cursor::~Cursor() = default;

const Row& Cursor::Current() const {
    return state_->row;
}

const std::u16string& Cursor::tableName() const {
    return state_->def->name;
}

std::size_t Cursor::columnCount() const {
    return state_->def->columns.size();
}

const ColumnInfo& Cursor::column(std::size_t position) const {
    return state_->def->columns.at(position);
}

std::optional<std::size_t> Cursor::FindColumn(std::u16string_view columnName) const {
    return state_->def->FindColumn(columnName);
}

const TableDef& Cursor::definition() const {
    return *state_->def;
}

bool Cursor::usesIndex() const {
    return state_->useIndex;
}

void Cursor::Rewind() {
    State& state = *state_;
    state.place = 0;
    state.slot = 0;
    state.page.reset();
    auto planned = state.conditions.empty() ? std::nullopt : PlanByIndex(*state.pager, *state.def, state.conditions);
    state.useIndex = planned.has_value();
    if (state.useIndex) {
        state.rows = std::move(*planned);
    } else {
        state.pages = UsageMap(*state.pager, state.def->ownedMap).Pages();
    }
}

bool Cursor::Next() {
    return state_->useIndex ? NextByIndex(*state_) : NextByScan(*state_);
}

/// Keeps the row if it meets the conditions.
bool Cursor::Take(State& state, RowId id, const RowBody& body) {
    const RowView view(*state.def, body.bytes, body.id.page);
    for (const BoundCondition& condition : state.conditions) {
        if (!condition.Holds(*state.pager, view, body.id.page)) return false;
    }
    state.row.Assign(id, body.bytes, body.id.page);
    return true;
}

bool Cursor::NextByIndex(State& state) {
    while (state.place < state.rows.size()) {
        const RowId id = state.rows[state.place++];
        if (Take(state, id, FollowRow(*state.pager, state.def->page, id))) return true;
    }
    return false;
}

bool Cursor::NextByScan(State& state) {
    for (;;) {
        if (!state.page) {
            if (state.place >= state.pages.size()) return false;
            state.page = OpenDataPage(*state.pager, state.pages[state.place++], state.def->page);
            state.slot = 0;
        }
        const DataPage& page = *state.page;
        while (state.slot < page.slotCount()) {
            const RowId id{page.page().number(), static_cast<std::uint8_t>(state.slot++)};
            const DataPage::Slot slot = page.Get(id.slot);
            if ((slot.flags & kSlotBody) != 0) continue; // deleted, or found through its header
            const bool moved = (slot.flags & kSlotHeader) != 0;
            const RowBody body =
                moved ? FollowRow(*state.pager, state.def->page, id) : RowBody{page.page(), id, slot.flags, slot.bytes};
            if (Take(state, id, body)) return true;
        }
        state.page.reset();
    }
}

} // namespace jet
