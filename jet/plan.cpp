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

/// The key of the values that equal the condition's literal; nothing if an index cannot tell.
std::optional<Bytes> EqualityKey(const BoundCondition& condition, bool ascending) {
    const Column& column = condition.column();
    Bytes key;
    key.reserve(kUsualKey);
    if (condition.isText()) {
        if (column.type != ColumnType::kText || !HasKnownOrder(column)) return std::nullopt;
        if (!IsIndexableText(std::get<std::u16string>(condition.literal()))) return std::nullopt;
        AppendKey(key, column, condition.literal(), ascending);
    } else if (column.type == ColumnType::kDouble) {
        AppendKey(key, column, condition.literal(), ascending);
    } else {
        // A whole-number column cannot equal what it cannot hold, but that is for the row comparison to say.
        const double number = condition.number();
        const bool fits = number == std::trunc(number) && std::abs(number) <= std::numeric_limits<std::int32_t>::max();
        if (column.type != ColumnType::kLong || !fits) return std::nullopt;
        AppendKey(key, column, static_cast<std::int32_t>(number), ascending);
    }
    return key;
}

std::optional<Stretch> EqualityStretch(const TableDef& def, const std::vector<BoundCondition>& conditions) {
    for (const BoundCondition& condition : conditions) {
        if (condition.op() != CompareOp::kEqual) continue;
        const Index* const index = SingleColumnIndex(def, condition.position());
        auto key = index ? EqualityKey(condition, index->columns[0].ascending) : std::nullopt;
        if (key) return Stretch{index, *key, true, *std::move(key), true};
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
    AppendKey(stretch.low, low->column(), low->literal(), ascending);
    AppendKey(stretch.high, high->column(), high->literal(), ascending);
    if (!ascending) {
        std::swap(stretch.low, stretch.high);
        std::swap(stretch.withLow, stretch.withHigh);
    }
    return stretch;
}

/// Tells rows that are not in a set from those that may be: one bit for each row among about 32 times as many, so that
/// some thousand rows fit into the processor's nearest cache and one row in 32 passes wrongly. The conditions, which
/// every row that is read must meet, sort those out.
class RowSieve {
  public:
    explicit RowSieve(const std::vector<RowId>& rows)
        : words_(std::bit_ceil(rows.size() / 2 + 1)), shift_(64 - std::countr_zero(64 * words_.size())) {
        for (const RowId id : rows) words_[Place(id) / 64] |= std::uint64_t{1} << Place(id) % 64;
    }
    bool MayHold(RowId id) const { return (words_[Place(id) / 64] >> Place(id) % 64 & 1) != 0; }

  private:
    std::size_t Place(RowId id) const {
        const std::uint64_t key = std::uint64_t{id.page} << 8 | std::uint64_t{id.slot};
        // The golden ratio spreads neighbouring numbers evenly over the upper bits.
        return static_cast<std::size_t>(key * 0x9E3779B97F4A7C15U >> shift_);
    }

    std::vector<std::uint64_t> words_;
    int shift_;
};

/// Drops from `rows` most of what `other` does not hold, and nothing else, keeping the order.
void Narrow(std::vector<RowId>& rows, const std::vector<RowId>& other) {
    const RowSieve sieve(other);
    std::erase_if(rows, [&sieve](RowId id) { return !sieve.MayHold(id); });
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
        if (other.size() < limit) Narrow(*rows, other);
    }
    return rows;
}

} // namespace jet
