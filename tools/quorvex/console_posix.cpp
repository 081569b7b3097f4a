#include "quorvex/console.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace quorvex::cli {
namespace {

volatile std::sig_atomic_t stopRequested = 0;

void OnStop(int) {
    stopRequested = 1;
}

} // namespace

// A file that is opened must not get the number of a standard stream that the caller closed.
Console::Console() {
    int opened = 0;
    do {
        opened = open("/dev/null", O_RDWR);
    } while (opened >= 0 && opened <= STDERR_FILENO);
    if (opened >= 0) close(opened);
    errorIsTerminal_ = isatty(STDERR_FILENO) == 1;
}

bool Console::Out(std::string_view text) {
    if (!outputFailed_) outputFailed_ = std::fwrite(text.data(), 1, text.size(), stdout) != text.size();
    return !outputFailed_;
}

void Console::Error(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

bool Console::Finish() {
    if (std::fflush(stdout) != 0) outputFailed_ = true;
    return !outputFailed_;
}

void Console::UseBinaryStreams() {}

void WatchForStop() {
    struct sigaction stop = {};
    stop.sa_handler = OnStop;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &stop, nullptr);
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, nullptr);
    sigaction(SIGXFSZ, &ignore, nullptr); // a file size limit is an error of the write, like a full disk
}

bool StopRequested() {
    return stopRequested != 0;
}

} // namespace quorvex::cli
