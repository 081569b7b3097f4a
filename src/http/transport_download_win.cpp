#include "http/transport_win.h"

#include "http/download_progress.h"
#include "http/http_request_win.h"
#include "http/http_session_win.h"
#include "http/partial_file_win.h"
#include "support/error.h"
#include "support/files.h"

#include <exception>

namespace quorvex::http {
namespace {

constexpr ULONGLONG kProgressMilliseconds = 100; // more often nobody can read it

// Shows how far a download is, and takes the display away in the end.
class ProgressDisplay {
  public:
    ProgressDisplay(support::Platform& platform, std::wstring caption, std::wstring name)
        : platform_(platform), caption_(std::move(caption)), name_(std::move(name)) {}
    ~ProgressDisplay() { platform_.progress.HideProgress(); }
    ProgressDisplay(const ProgressDisplay&) = delete;
    ProgressDisplay& operator=(const ProgressDisplay&) = delete;

    void Show(std::uint64_t done, std::uint64_t total) {
        const ULONGLONG now = GetTickCount64();
        if (done != 0 && done != total && now - shownAt_ < kProgressMilliseconds) return;
        shownAt_ = now;
        platform_.progress.ShowProgress(caption_, DownloadProgressText(name_, done, total));
    }

  private:
    support::Platform& platform_;
    const std::wstring caption_;
    const std::wstring name_;
    ULONGLONG shownAt_ = 0;
};

} // namespace

bool Transport::GetHTTPFile(const std::wstring& url, const std::wstring& targetFile,
                            const std::wstring& progressCaption) {
    const RequestSlot slot;
    if (!slot.Held()) return false;
    Begin();
    targetFile_ = targetFile;
    bool complete = false;
    try {
        complete = Download(url, progressCaption);
    } catch (const support::Error& error) { // a file or address that cannot be used
        Fail(error);
    } catch (const std::exception&) { // no memory
        Fail(RequestFailure::Kind::TooLong);
    }
    lastState_ = complete ? kComplete : kError;
    targetFile_.clear();
    End();
    LogFailure(url);
    return complete;
}

bool Transport::Download(const std::wstring& url, const std::wstring& progressCaption) {
    const Deadline deadline(limits_.clock, limits_.downloadSilenceSeconds);
    HttpRequest request(SessionFor(NamedProxy()), url, deadline.LongestMilliseconds() + kNetworkGraceMilliseconds);
    // An error page is no package, whatever it holds.
    if (!Ask(request, deadline) || !NoteStatus(request)) return false;
    if (support::FileExists(targetFile_) && !support::DeleteFileQuietly(targetFile_)) return false;
    return SaveBody(request, progressCaption);
}

bool Transport::SaveBody(HttpRequest& request, const std::wstring& progressCaption) {
    PartialFile file(targetFile_);
    ProgressDisplay progress(platform_, progressCaption, support::FileNameOf(targetFile_));
    // Without a length nothing is read and the file stays empty: intended, the length is what counts the bytes down.
    const std::uint64_t total = request.ContentLength();
    lastState_ = kReceivingResponse;
    for (std::uint64_t done = 0; done < total;) {
        progress.Show(done, total);
        const Deadline silence(limits_.clock, limits_.downloadSilenceSeconds);
        if (!RunMessages(silence) || !NextPiece(request, silence)) return false;
        std::string_view piece = request.Piece();
        if (piece.size() > total - done) piece = piece.substr(0, static_cast<std::size_t>(total - done));
        if (piece.empty()) {
            Fail(RequestFailure::Kind::Cut);
            return false;
        }
        file.Append(piece);
        done += piece.size();
        if (done == total) progress.Show(done, total);
    }
    file.Commit();
    return true;
}

} // namespace quorvex::http
