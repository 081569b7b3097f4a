#pragma once

#include "format/table_def.h"
#include "jet/cursor.h"

namespace jet {

/// The list of a database's objects, kept in the table MSysObjects.
class Catalog {
  public:
    explicit Catalog(std::shared_ptr<Pager> pager);

    /// Definition page of a local table, found through the catalog's index; nothing if there is no table of that name.
    std::optional<PageNo> FindTable(std::u16string_view name) const;
    /// Names of the user's tables, in catalog order.
    std::vector<std::u16string> TableNames() const;
    /// Names and definition pages of all local tables, the system's included.
    std::vector<std::pair<std::u16string, PageNo>> AllTables() const;
    const std::shared_ptr<const TableDef>& definition() const { return def_; }

  private:
    std::shared_ptr<Pager> pager_;
    std::shared_ptr<const TableDef> def_;
    std::size_t id_ = 0;
    std::size_t parent_ = 0;
    std::size_t name_ = 0;
    std::size_t type_ = 0;
    std::size_t flags_ = 0;
};

/// Every page that a map of some table, index or long column owns. Throws kCorrupt for a damaged
/// one.
std::vector<PageNo> ClaimedPages(const std::shared_ptr<Pager>& pager);

/// Id of the catalog's container "Tables".
inline constexpr std::int32_t kTablesContainer = 0x0F000001;

} // namespace jet
