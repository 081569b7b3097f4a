#pragma once

#include "jet/path.h"

#include "storage/sharing.h"

#include <array>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace jet {

/// Where the entries of an index page end, in its area; checked (see IndexPage).
using EntryEnds = std::vector<std::uint16_t>;

using PageBytes = std::array<Byte, kPageSize>;

/// A page as it was before a change.
struct PageImage {
    bool dirty;
    PageBytes bytes;
};

/// A page in memory.
struct Page {
    PageNo number = 0;
    int pins = 0;
    bool dirty = false;
    bool recent = false;
    std::shared_ptr<const EntryEnds> ends; ///< null: not known, as the page was read or changed since
    std::unique_ptr<PageImage> before;     ///< as the open statement found it; null: not changed by it, or new
    PageBytes bytes;
};

/// Keeps a page in memory while it lives.
class PageRef {
  public:
    PageRef() = default;
    explicit PageRef(Page* page) : page_(page) { ++page_->pins; }
    PageRef(const PageRef& other) : page_(other.page_) {
        if (page_) ++page_->pins;
    }
    PageRef(PageRef&& other) noexcept : page_(std::exchange(other.page_, nullptr)) {}
    PageRef& operator=(PageRef other) noexcept {
        std::swap(page_, other.page_);
        return *this;
    }
    ~PageRef() {
        if (page_) --page_->pins;
    }
    const Byte* data() const { return page_->bytes.data(); }
    PageNo number() const { return page_->number; }
    explicit operator bool() const { return page_ != nullptr; }
    const std::shared_ptr<const EntryEnds>& ends() const { return page_->ends; }
    void KeepEnds(std::shared_ptr<const EntryEnds> ends) const { page_->ends = std::move(ends); }

  protected:
    Page* page_ = nullptr;
};

/// The same, for a page that may be changed. It must not outlive the statement it was got in.
class PageEdit : public PageRef {
  public:
    PageEdit() = default;
    explicit PageEdit(Page* page) : PageRef(page) {}
    Byte* edit() const {
        page_->ends.reset();
        return page_->bytes.data();
    }
};

/// All page input and output of one open file: cache, transactions, recovery. One thread at a time.
///
/// Changes are made inside a Statement, which takes effect whole or not at all. A statement is a transaction of its own
/// unless Begin was called: then all statements up to Commit are one. A transaction is written to the file under the
/// protection of the journal and survives a power cut once it is committed.
class Pager {
  public:
    struct Options {
        bool writable = false;
        bool yields = false;               ///< writable: LetGo may be called
        std::chrono::milliseconds wait{0}; ///< for others who hold the file
        std::size_t cachePages = 1024;     ///< unchanged pages kept in memory
        std::size_t spillPages = 4096;     ///< changed pages after which an open transaction is written out
    };

    /// Opens an existing file and undoes a half-written transaction found beside it.
    static std::shared_ptr<Pager> Open(Storage& storage, const Path& path, const Options& options);
    /// Makes a new file of the given pages (a multiple of the page size) and opens it for writing.
    static std::shared_ptr<Pager> Create(Storage& storage, const Path& path, ByteView pages, const Options& options);
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    PageNo pageCount() const { return pageCount_; }
    /// Whether the file, when opened, ended inside a page.
    bool hasPartialPage() const { return partialPage_; }
    bool writable() const { return options_.writable; }
    std::uint64_t pagesRead() const { return pagesRead_; }
    /// Goes up whenever something was taken back, so that knowledge kept outside the pages can be dropped.
    std::uint64_t rollbacks() const { return rollbacks_; }

    PageRef Read(PageNo page);
    PageEdit Edit(PageNo page);
    /// A zeroed page at the end of the file.
    PageEdit Append();

    /// The statements that follow are one transaction, until Commit or until a failure rolls it back.
    void Begin();
    bool inTransaction() const { return begun_; }
    /// Writes the open transaction; its changes are on the disk when this returns. On failure nothing of it is left,
    /// except when the commit itself failed: then nobody knows, and the file must be opened again.
    ///
    /// If it need not last, a power cut may roll it back, as a whole, until a later transaction is committed or written
    /// out; that saves a flush.
    void Commit(bool lasting = true);
    void RollBack();
    /// Lets others have the file until it is next needed; between transactions only, and only with `yields`. What is
    /// cached is dropped if the file was changed meanwhile.
    void LetGo();
    /// Commits and closes the file; later calls fail with kUsage.
    void Close();

  private:
    friend class Statement;

    Pager(Storage& storage, const Path& path, const Options& options);
    void Attach(std::unique_ptr<File> file);
    void TakeBack();
    void CheckUsable();
    Page* Load(PageNo page);
    Page* NewFrame(PageNo page);
    void Drop(Page* page) noexcept;
    bool MakeRoom();
    void Remember(Page* page);
    void ForgetImage(Page* page) noexcept;
    void BeginStatement();
    void EndStatement();
    void UndoStatement() noexcept;
    void StampHeader();
    void WriteOut();
    void WritePages();
    void UndoTransaction() noexcept;

    Options options_;
    Journal journal_;
    std::optional<WriterTurn> turn_;
    std::unique_ptr<File> file_;
    bool away_ = false; ///< let go of
    FileState state_;   ///< as of the last commit; of a writable file
    std::uint64_t newStamp_ = 0;
    bool owesFlush_ = false; ///< of the journal, after a commit that need not last
    PageNo pageCount_ = 0;
    bool partialPage_ = false;
    std::vector<std::unique_ptr<Page>> frames_;
    std::unordered_map<PageNo, Page*> index_;
    std::array<Page*, 256> latest_{}; ///< by the page number's last byte: found without the index, and perhaps dropped
    std::size_t hand_ = 0;
    std::uint64_t pagesRead_ = 0;
    std::uint64_t rollbacks_ = 0;

    bool broken_ = false;
    bool inStatement_ = false;
    bool begun_ = false;          ///< by Begin
    bool pending_ = false;        ///< the open transaction has finished statements
    PageNo transactionPages_ = 0; ///< page count when it began
    PageNo statementPages_ = 0;
    std::vector<Page*> touched_; ///< pages with an image
    std::vector<std::unique_ptr<PageImage>> spareImages_;
    std::vector<Page*> dirty_;
    std::unordered_set<PageNo> journaled_;
};

/// One change that happens whole or not at all. Destroyed without Done(), it leaves the pages as it found them.
class Statement {
  public:
    explicit Statement(Pager& pager) : pager_(&pager) { pager_->BeginStatement(); }
    ~Statement() {
        if (pager_) pager_->UndoStatement();
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    /// Ends it, and commits it unless it is part of a larger transaction. On failure the whole open transaction is
    /// rolled back.
    void Done() {
        Pager* const pager = std::exchange(pager_, nullptr);
        pager->EndStatement();
    }

  private:
    Pager* pager_;
};

} // namespace jet
