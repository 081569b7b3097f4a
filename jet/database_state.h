#pragma once

#include "catalog.h"
#include "jet/database.h"
#include "storage/pager.h"
#include "tables/allocator.h"

#include <map>

namespace jet {

struct Database::State {
    explicit State(std::shared_ptr<Pager> opened);

    const Catalog& GetCatalog();
    Table SystemTable(PageNo page) const;
    void FillNewCatalog(double created);
    void RegisterTable(const std::u16string& name, PageNo page);

    std::shared_ptr<Pager> pager;
    std::shared_ptr<Allocator> allocator;
    std::optional<Catalog> catalog;
    std::map<std::u16string, std::shared_ptr<const TableDef>> tables; ///< by folded name
    std::uint64_t rollbacks = 0;
};

Pager::Options PagerOptions(const OpenOptions& options, bool writable);
Storage& StorageOf(const OpenOptions& options);

} // namespace jet
