#include "plan.h"

#include "format/sort_key.h"
#include "tables/index_scan.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace jet {
namespace {

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

const Index* SingleColumnIndex(const TableDef& def, std::size_t column) {
    for (const Index& index : def.indexes) {
        if (index.columns.size() == 1 && index.columns[0].column == column) return &index;
    }
    return nullptr;
}

/// A stretch of an index's order, ends by key; the flags say whether the key itself is inside.
struct Stretch {
    const Index* index;
    Bytes low;
    bool withLow;
    Bytes high;
    bool withHigh;
};

std::vector<RowId> Collect(Pager& pager, const TableDef& def, const Stretch& stretch, std::size_t limit) {
    const IndexPosition from{stretch.low, stretch.withLow ? kBeforeAllRows : kAfterAllRows};
    const IndexPosition to{stretch.high, stretch.withHigh ? kAfterAllRows : kBeforeAllRows};
    IndexScan scan(pager, def.page, stretch.index->root, from);
    std::vector<RowId> rows;
    scan.Collect(to, rows, limit);
    return rows;
}

std::optional<Value> EqualityValue(const BoundCondition& condition) {
    if (condition.isText()) {
        if (condition.column().type != ColumnType::kText || !HasKnownOrder(condition.column())) return std::nullopt;
        if (!IsIndexableText(condition.text())) return std::nullopt;
        return condition.text();
    }
    if (condition.column().type == ColumnType::kDouble) return condition.number();
    // A whole-number column cannot equal what it cannot hold, but that is for the row comparison to say.
    if (condition.column().type != ColumnType::kLong) return std::nullopt;
    const double number = condition.number();
    const bool fits = number == std::trunc(number) && std::abs(number) <= std::numeric_limits<std::int32_t>::max();
    return fits ? std::optional<Value>(static_cast<std::int32_t>(number)) : std::nullopt;
}

std::optional<Stretch> EqualityStretch(const TableDef& def, const std::vector<BoundCondition>& conditions) {
    for (const BoundCondition& condition : conditions) {
        if (condition.op() != CompareOp::kEqual) continue;
        const Index* const index = SingleColumnIndex(def, condition.position());
        const auto value = index ? EqualityValue(condition) : std::nullopt;
        if (!value) continue;
        Bytes key;
        key.reserve(kUsualKey);
        AppendKey(key, condition.column(), *value, index->columns[0].ascending);
        return Stretch{index, key, true, key, true};
    }
    return std::nullopt;
}

/// A stretch of an indexed DOUBLE column for conditions that bound it on both sides.
std::optional<Stretch> RangeStretch(const TableDef& def, const std::vector<BoundCondition>& conditions,
                                    std::size_t column) {
    const Index* const index = SingleColumnIndex(def, column);
    if (!index || def.columns[column].type != ColumnType::kDouble) return std::nullopt;
    const BoundCondition* low = nullptr;
    const BoundCondition* high = nullptr;
    for (const BoundCondition& condition : conditions) {
        if (condition.position() != column) continue;
        const CompareOp op = condition.op();
        if (op == CompareOp::kGreater || op == CompareOp::kGreaterEqual) low = &condition;
        if (op == CompareOp::kLess || op == CompareOp::kLessEqual) high = &condition;
    }
    if (!low || !high) return std::nullopt;
    const bool ascending = index->columns[0].ascending;
    Stretch stretch{index, {}, low->op() == CompareOp::kGreaterEqual, {}, high->op() == CompareOp::kLessEqual};
    AppendKey(stretch.low, low->column(), low->number(), ascending);
    AppendKey(stretch.high, high->column(), high->number(), ascending);
    if (!ascending) {
        std::swap(stretch.low, stretch.high);
        std::swap(stretch.withLow, stretch.withHigh);
    }
    return stretch;
}

/// Which rows there are: a table of at least twice their number, where a row lies at the first free place from its own.
class RowSet {
  public:
    explicit RowSet(const std::vector<RowId>& rows) : places_(std::bit_ceil(2 * rows.size() + 1), kFree) {
        for (const RowId id : rows) places_[PlaceOf(id)] = KeyOf(id);
    }
    bool Holds(RowId id) const { return places_[PlaceOf(id)] != kFree; }

  private:
    static constexpr std::uint64_t kFree = ~std::uint64_t{0};

    static std::uint64_t KeyOf(RowId id) { return std::uint64_t{id.page} << 8 | std::uint64_t{id.slot}; }
    std::size_t PlaceOf(RowId id) const {
        const std::uint64_t key = KeyOf(id);
        const std::size_t mask = places_.size() - 1;
        // The golden ratio spreads neighbouring numbers evenly.
        std::size_t place = static_cast<std::size_t>(key * 0x9E3779B97F4A7C15U >> 20) & mask;
        while (places_[place] != kFree && places_[place] != key) place = (place + 1) & mask;
        return place;
    }

    std::vector<std::uint64_t> places_;
};

/// Drops from `rows` what `other` does not hold, keeping the order.
void Intersect(std::vector<RowId>& rows, const std::vector<RowId>& other) {
    const RowSet held(other);
    std::erase_if(rows, [&held](RowId id) { return !held.Holds(id); });
}

} // namespace

std::optional<std::vector<RowId>> PlanByIndex(Pager& pager, const TableDef& def,
                                              const std::vector<BoundCondition>& conditions) {
    if (const auto stretch = EqualityStretch(def, conditions)) return Collect(pager, def, *stretch, kNoLimit);
    std::optional<std::vector<RowId>> rows;
    std::vector<std::size_t> used;
    for (const BoundCondition& condition : conditions) {
        const std::size_t column = condition.position();
        if (std::find(used.begin(), used.end(), column) != used.end()) continue;
        used.push_back(column);
        const auto stretch = RangeStretch(def, conditions, column);
        if (!stretch) continue;
        if (!rows) {
            rows = Collect(pager, def, *stretch, kNoLimit);
            continue;
        }
        // A second index spares reading rows only while its own stretch is of a like size.
        constexpr std::size_t kWorthwhile = 64;
        if (rows->size() < kWorthwhile) break;
        const std::size_t limit = 8 * rows->size();
        const std::vector<RowId> other = Collect(pager, def, *stretch, limit);
        if (other.size() < limit) Intersect(*rows, other);
    }
    return rows;
}

} // namespace jet
