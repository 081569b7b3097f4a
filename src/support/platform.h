#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::database {
class DatabaseProvider;
}

namespace quorvex::support {

// A moment of the local clock.
struct LocalTime {
    int year = 1900;
    int month = 1; // 1 to 12
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int weekday = 0; // 0 is Sunday
};

// Message-box styles and answers, as Windows numbers them.
inline constexpr int kStyleOk = 0;
inline constexpr int kStyleYesNo = 4;
inline constexpr int kStyleCritical = 16;
inline constexpr int kStyleQuestion = 32;
inline constexpr int kStyleInformation = 64;
inline constexpr int kAnswerOk = 1;
inline constexpr int kAnswerYes = 6;
inline constexpr int kAnswerNo = 7;

// What the user chose in the update dialog. After ShowDetails and SendLogs the dialog is shown again.
enum class UpdateChoice { Cancel = 0, ApplyFromFolder = 1, Download = 2, ShowDetails = 3, SendLogs = 4 };

// A message for the user's mail program.
struct MailMessage {
    std::wstring to;
    std::wstring subject;
    std::wstring body;
    std::vector<std::wstring> attachments; // full paths
    bool review = false;                   // shown for the user to send, where the program can do so
};
enum class MailStatus { Sent, Shown, NoProgram, Failed };
struct MailResult {
    MailStatus status = MailStatus::NoProgram;
    std::wstring detail; // what the mail program said when it failed
};

// Everything that the portable rooms need from outside. The Windows one is assembled in server/; tests put their own
// behind it. No call throws unless its comment says so.
class Platform {
  public:
    virtual ~Platform() = default;

    // Stands in the user column of log lines instead of the user's name when not empty.
    std::wstring logUserName;

    // --- Web ---------------------------------------------------------------------------------------------------
    // True while a request of this process waits for its reply.
    virtual bool RequestRunning() const = 0;
    // GET of the URL: the decoded body with every "&amp;" made "&", or "TimeOut" when the reply did not come within
    // limitSeconds, the user cancelled or the network failed.
    virtual std::wstring GetUrl(const std::wstring& url, int limitSeconds) = 0;
    // Downloads to a file, showing progress under the caption. False when it failed or was cancelled; nothing is left
    // in the target's place then.
    virtual bool GetHttpFile(const std::wstring& url, const std::wstring& targetFile,
                             const std::wstring& progressCaption) = 0;
    // Raises the stop flag: the request that waits gives up as if it had timed out.
    virtual void StopRequest() = 0;

    // --- User --------------------------------------------------------------------------------------------------
    // A message box above all windows; returns the pressed button. An empty title is the component's default title.
    virtual int ShowMessage(const std::wstring& text, int style, const std::wstring& title) = 0;
    virtual void SetClipboardText(const std::wstring& text) = 0;
    // The shell's "open" on a file or address with the given working directory; the shell's result, above 32 is
    // success.
    virtual int OpenWithShell(const std::wstring& file, const std::wstring& workingDirectory) = 0;
    virtual UpdateChoice AskUpdateChoice(const std::wstring& caption, const std::wstring& dataFolder,
                                         bool internetIsAvailable) = 0;
    // A small window that says how far a long run is; shown by the first call with a text, gone after HideProgress.
    virtual void ShowProgress(const std::wstring& caption, const std::wstring& text) = 0;
    virtual void HideProgress() = 0;
    // The status window of an extraction: its caption, its text and a line that says what is being done. Shown by the
    // first call, gone after HideZipStatus.
    virtual void ShowZipStatus(const std::wstring& title, const std::wstring& text, const std::wstring& status) = 0;
    virtual void HideZipStatus() = 0;
    // Lets pending window messages run once.
    virtual void PumpMessages() = 0;
    // Hands the message to the user's mail program; a platform without one sends nothing.
    virtual MailResult SendMail(const MailMessage&) { return {}; }

    // --- Machine -----------------------------------------------------------------------------------------------
    virtual std::wstring ComputerName() const = 0; // empty when the system does not tell
    virtual std::wstring UserName() const = 0;
    virtual LocalTime Now() const = 0;
    virtual void SleepMilliseconds(int milliseconds) const = 0;
    // Server and share (two backslashes, server, share) behind a mapped drive letter; empty for a local drive.
    virtual std::wstring DriveShareName(wchar_t driveLetter) const = 0;
    // Version of the data access layer as the registry states it; empty when it cannot be read.
    virtual std::wstring DataAccessVersion() const = 0;
    virtual std::wstring SystemVersion() const = 0;

    // --- Local data --------------------------------------------------------------------------------------------
    // The engine in use for the data files.
    virtual database::DatabaseProvider& Databases() = 0;
};

} // namespace quorvex::support
