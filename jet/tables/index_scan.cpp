#include "tables/index_scan.h"

#include "jet/error.h"

namespace jet {

IndexPage DescendIndex(Pager& pager, PageNo owner, PageNo root, const IndexPosition& position,
                       std::vector<PageNo>* path) {
    PageNo at = root;
    for (unsigned depth = 0; depth < kMaxIndexDepth; ++depth) {
        IndexPage page(pager.Read(at), owner);
        if (page.isLeaf()) return page;
        if (path) path->push_back(at);
        at = page.ChildFor(position);
        if (at == 0) ThrowCorrupt("an index node has no children", page.number());
    }
    ThrowCorrupt("an index tree has no leaves", root);
}

IndexScan::IndexScan(Pager& pager, PageNo owner, PageNo root, const IndexPosition& from)
    : pager_(&pager), owner_(owner), page_(DescendIndex(pager, owner, root, from)) {
    entry_ = page_->LowerBound(from);
}

bool IndexScan::NextPage() {
    const PageNo next = page_->next();
    if (next == 0) return false;
    std::optional<std::pair<Bytes, RowId>> last;
    if (page_->size() > 0) last.emplace(page_->Key(page_->size() - 1), page_->Row(page_->size() - 1));
    const PageNo from = page_->number();
    page_.emplace(pager_->Read(next), owner_);
    if (!page_->isLeaf() || page_->previous() != from) ThrowCorrupt("an index's leaves are linked wrongly", next);
    if (page_->size() == 0 && page_->next() != 0) ThrowCorrupt("an index has an empty leaf", next);
    if (last && page_->size() > 0 && page_->Compare(0, {last->first, last->second}) <= 0) {
        ThrowCorrupt("an index's leaves are out of order", next);
    }
    entry_ = 0;
    return true;
}

bool IndexScan::Next() {
    if (started_) ++entry_;
    started_ = true;
    while (entry_ >= page_->size()) {
        if (!NextPage()) return false;
    }
    return true;
}

void IndexScan::Collect(const IndexPosition& to, std::vector<RowId>& rows, std::size_t limit) {
    while (rows.size() < limit) {
        // Most stretches are one entry long; the others end far away.
        std::size_t stop = entry_;
        while (stop < page_->size() && stop - entry_ < 2 && page_->Compare(stop, to) < 0) ++stop;
        if (stop - entry_ == 2) stop = page_->LowerBound(to);
        page_->AppendRows(entry_, stop, rows);
        if (stop < page_->size() || !NextPage()) return;
    }
}

} // namespace jet
