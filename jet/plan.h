#pragma once

#include "condition.h"

namespace jet {

/// The rows an index offers for the conditions, in index order, or nothing when no index fits. Every row that meets the
/// conditions is among them; not every one of them needs to meet all.
std::optional<std::vector<RowId>> PlanByIndex(Pager& pager, const TableDef& def,
                                              const std::vector<BoundCondition>& conditions);

} // namespace jet
