#include "storage/pager.h"

#include "jet/error.h"

#include <algorithm>

namespace jet {
namespace {

constexpr std::size_t kSpareImages = 64;
constexpr PageNo kHeaderPage = 0;

} // namespace

std::shared_ptr<Pager> Pager::Open(Storage& storage, const Path& path, const Options& options) {
    std::shared_ptr<Pager> pager(new Pager(storage, path, options));
    if (options.yields && options.writable) {
        pager->turn_.emplace(storage, path, pager->journal_);
        try {
            pager->Attach(pager->turn_->Take(options.wait));
        } catch (const Error&) {
            pager->journal_.RemoveIfEmpty();
            throw;
        }
    } else {
        pager->Attach(OpenDatabaseFile(storage, path, options.writable, options.wait));
    }
    return pager;
}

std::shared_ptr<Pager> Pager::Create(Storage& storage, const Path& path, ByteView pages, const Options& options) {
    auto file = storage.Open(path, OpenMode::kCreateNew);
    try {
        // A journal of an earlier file of this name may still be wanted for that file.
        const Path journal = Journal::PathFor(path);
        if (storage.Exists(journal)) Journal::SetAside(storage, journal);
        file->WriteAt(0, pages);
        file->Flush();
        storage.FlushNames(path);
    } catch (const Error&) {
        file.reset();
        storage.Remove(path);
        throw;
    }
    std::shared_ptr<Pager> pager(new Pager(storage, path, options));
    pager->Attach(std::move(file));
    return pager;
}

Pager::Pager(Storage& storage, const Path& path, const Options& options)
    : options_(options), journal_(storage, Journal::PathFor(path)) {
    spareImages_.reserve(kSpareImages);
}

void Pager::Attach(std::unique_ptr<File> file) {
    file_ = std::move(file);
    // A last part of a page belongs to no page; the header check reports it.
    const std::uint64_t size = file_->Size();
    partialPage_ = size % kPageSize != 0;
    pageCount_ = static_cast<PageNo>(std::min<std::uint64_t>(size / kPageSize, kMaxPages));
    if (options_.writable && pageCount_ > 0) state_ = FileState::Of(*file_);
}

Pager::~Pager() {
    try {
        Close();
    } catch (const std::exception&) {
        return; // what could not be committed was rolled back
    }
}

void Pager::Close() {
    if (!file_ && !away_) return;
    if (!broken_) Commit();
    // After a failed roll-back the journal is what repairs the file; it must stay.
    if (options_.writable && !broken_) journal_.Remove();
    file_.reset();
    away_ = false;
    turn_.reset();
}

void Pager::CheckUsable() {
    if (away_ && !broken_) TakeBack();
    if (!file_) throw Error(ErrorCode::kUsage, "The database is closed");
    if (broken_) throw Error(ErrorCode::kIo, "The database must be opened again after a failed write");
}

void Pager::LetGo() {
    if (!turn_ || away_ || broken_ || pending_ || inStatement_) return;
    begun_ = false;
    file_.reset();
    away_ = true;
    turn_->Give();
}

void Pager::TakeBack() {
    const FileState known = state_;
    const PageNo knownPages = pageCount_;
    Attach(turn_->Take(options_.wait));
    away_ = false;
    if (state_ == known && pageCount_ == knownPages) return;
    for (const auto& frame : frames_) Drop(frame.get());
    ++rollbacks_;
}

/// Forgets a page; whoever still pins it keeps the bytes.
void Pager::Drop(Page* page) noexcept {
    const auto found = index_.find(page->number);
    if (found != index_.end() && found->second == page) index_.erase(found);
    page->number = kMaxPages;
    page->dirty = false;
    page->recent = false;
    page->ends.reset();
}

/// Frees a frame by the clock method; false when nothing can go.
bool Pager::MakeRoom() {
    for (std::size_t steps = 2 * frames_.size(); steps > 0; --steps) {
        hand_ = (hand_ + 1) % frames_.size();
        Page& page = *frames_[hand_];
        if (page.pins > 0 || page.dirty) continue;
        if (page.recent) {
            page.recent = false;
            continue;
        }
        Drop(&page);
        return true;
    }
    return false;
}

Page* Pager::NewFrame(PageNo number) {
    Page* page = nullptr;
    if (frames_.size() >= options_.cachePages && frames_.size() >= 2 * dirty_.size() && MakeRoom()) {
        page = frames_[hand_].get();
    } else {
        frames_.push_back(std::make_unique_for_overwrite<Page>());
        page = frames_.back().get();
    }
    page->number = number;
    page->dirty = false;
    page->recent = true;
    index_.emplace(number, page);
    return page;
}

Page* Pager::Load(PageNo number) {
    CheckUsable();
    Page*& latest = latest_[number % latest_.size()];
    if (!latest || latest->number != number) {
        const auto found = index_.find(number);
        latest = found == index_.end() ? nullptr : found->second;
    }
    if (latest) {
        latest->recent = true;
        return latest;
    }
    if (number >= pageCount_) ThrowCorrupt("a page past the end of the file is referred to", number);
    Page* const page = NewFrame(number);
    ++pagesRead_;
    std::size_t count = 0;
    try {
        count = file_->ReadAt(std::uint64_t{number} * kPageSize, page->bytes);
    } catch (const Error&) {
        Drop(page);
        throw;
    }
    if (count != kPageSize) {
        Drop(page);
        throw Error(ErrorCode::kTruncated, "The database file ends in page " + std::to_string(number));
    }
    return page;
}

PageRef Pager::Read(PageNo number) {
    return PageRef(Load(number));
}

void Pager::Remember(Page* page) {
    if (page->before || page->number >= statementPages_) return;
    std::unique_ptr<PageImage> image;
    if (spareImages_.empty()) {
        image = std::make_unique_for_overwrite<PageImage>();
    } else {
        image = std::move(spareImages_.back());
        spareImages_.pop_back();
    }
    image->dirty = page->dirty;
    image->bytes = page->bytes;
    touched_.push_back(page);
    page->before = std::move(image);
}

void Pager::ForgetImage(Page* page) noexcept {
    if (spareImages_.size() < kSpareImages) {
        spareImages_.push_back(std::move(page->before));
    } else {
        page->before.reset();
    }
}

PageEdit Pager::Edit(PageNo number) {
    if (!inStatement_) throw Error(ErrorCode::kUsage, "A page is changed outside a statement");
    Page* const page = Load(number);
    Remember(page);
    if (!page->dirty) {
        page->dirty = true;
        dirty_.push_back(page);
    }
    return PageEdit(page);
}

PageEdit Pager::Append() {
    CheckUsable();
    if (!inStatement_) throw Error(ErrorCode::kUsage, "A page is added outside a statement");
    if (pageCount_ >= kMaxPages)
        throw Error(ErrorCode::kUnsupported, "The database has reached its largest size, 2 GiB");
    Page* const page = NewFrame(pageCount_);
    page->bytes.fill(0);
    page->dirty = true;
    dirty_.push_back(page);
    ++pageCount_;
    return PageEdit(page);
}

void Pager::BeginStatement() {
    CheckUsable();
    if (!options_.writable) throw Error(ErrorCode::kReadOnly, "The database is open for reading only");
    if (inStatement_) throw Error(ErrorCode::kUsage, "Statements cannot be nested");
    if (!pending_) transactionPages_ = pageCount_;
    statementPages_ = pageCount_;
    inStatement_ = true;
}

void Pager::EndStatement() {
    inStatement_ = false;
    for (Page* page : touched_) ForgetImage(page);
    touched_.clear();
    pending_ = true;
    if (!begun_) {
        Commit();
    } else if (dirty_.size() > options_.spillPages) {
        try {
            WriteOut();
        } catch (const std::exception&) {
            UndoTransaction();
            throw;
        }
    }
}

void Pager::UndoStatement() noexcept {
    for (Page* page : touched_) {
        page->bytes = page->before->bytes;
        page->dirty = page->before->dirty;
        page->ends.reset();
        ForgetImage(page);
    }
    touched_.clear();
    std::erase_if(dirty_, [this](Page* page) {
        if (page->number < statementPages_) return !page->dirty;
        Drop(page);
        return true;
    });
    pageCount_ = statementPages_;
    inStatement_ = false;
    ++rollbacks_;
}

void Pager::Begin() {
    CheckUsable();
    if (begun_) throw Error(ErrorCode::kUsage, "A transaction is already open");
    begun_ = true;
}

void Pager::Commit(bool lasting) {
    if (!away_) CheckUsable();
    if (inStatement_) throw Error(ErrorCode::kUsage, "A statement is still open");
    begun_ = false;
    if (!pending_) {
        if (lasting && owesFlush_) journal_.Invalidate(true);
        if (lasting) owesFlush_ = false;
        return;
    }
    try {
        WriteOut();
        file_->Flush();
    } catch (const std::exception&) {
        UndoTransaction();
        throw;
    }
    try {
        if (journal_.active()) journal_.Invalidate(lasting);
        owesFlush_ = !lasting;
    } catch (const std::exception&) {
        // The journal may or may not be invalid now, so neither going on nor rolling back would be right. The journal
        // decides at the next opening.
        broken_ = true;
        throw;
    }
    state_.stamp = newStamp_;
    pending_ = false;
    journaled_.clear();
}

void Pager::RollBack() {
    CheckUsable();
    if (inStatement_) throw Error(ErrorCode::kUsage, "A statement is still open");
    if (begun_ || pending_) UndoTransaction();
    CheckUsable();
}

/// Gives the file the stamp by which the journal knows the state that the open transaction leads to.
void Pager::StampHeader() {
    Page* const header = Load(kHeaderPage);
    newStamp_ = journal_.NextStamp();
    Store64(header->bytes.data() + kHeaderStamp, newStamp_);
    if (!header->dirty) dirty_.push_back(header);
    header->dirty = true;
}

/// Saves the old contents of the changed pages, then writes the new ones. The transaction stays undecided.
void Pager::WriteOut() {
    if (dirty_.empty()) return;
    if (!journal_.active()) StampHeader();
    std::sort(dirty_.begin(), dirty_.end(), [](const Page* a, const Page* b) { return a->number < b->number; });
    std::vector<PageNo> save;
    for (const Page* page : dirty_) {
        if (page->number < transactionPages_ && journaled_.insert(page->number).second) save.push_back(page->number);
    }
    journal_.Append(*file_, state_, transactionPages_, pageCount_, save);
    // New pages first: where the disk is full, that shows before anything is overwritten.
    const auto grown = std::find_if(dirty_.begin(), dirty_.end(),
                                    [this](const Page* page) { return page->number >= transactionPages_; });
    std::rotate(dirty_.begin(), grown, dirty_.end());
    WritePages();
    for (Page* page : dirty_) page->dirty = false;
    dirty_.clear();
}

/// Writes the changed pages, neighbours together.
void Pager::WritePages() {
    constexpr std::size_t kMostTogether = 64;
    Bytes run;
    for (std::size_t i = 0; i < dirty_.size(); ++i) {
        AppendBytes(run, dirty_[i]->bytes);
        const PageNo next = dirty_[i]->number + 1;
        const bool goesOn = i + 1 < dirty_.size() && dirty_[i + 1]->number == next;
        if (goesOn && run.size() < kMostTogether * kPageSize) continue;
        file_->WriteAt(std::uint64_t{next} * kPageSize - run.size(), run);
        run.clear();
    }
}

void Pager::UndoTransaction() noexcept {
    try {
        dirty_.clear();
        for (const auto& frame : frames_) Drop(frame.get());
        if (pending_) pageCount_ = transactionPages_;
        begun_ = false;
        pending_ = false;
        ++rollbacks_;
        journaled_.clear();
        if (journal_.active()) {
            journal_.Replay(*file_);
        } else {
            journal_.Invalidate(true); // nothing was overwritten yet
        }
    } catch (const std::exception&) {
        broken_ = true;
    }
}

} // namespace jet
