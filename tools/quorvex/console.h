#pragma once

#include <string_view>

namespace quorvex::cli {

// The program's standard streams. Text goes in as UTF-8: as such into files and pipes, as characters onto a Windows
// console.
class Console {
  public:
    Console();
    // False from the first write that fails on (disk full, closed pipe); later writes are dropped.
    bool Out(std::string_view text);
    // Messages and progress. What cannot be written is lost: there may be no console.
    void Error(std::string_view text);
    // Whether progress on the error stream would be seen by someone.
    bool ErrorIsTerminal() const { return errorIsTerminal_; }
    // Writes what is buffered; false if any output was lost.
    bool Finish();
    // Makes standard input and output plain bytes, for CSV from and to pipes.
    static void UseBinaryStreams();

  private:
    bool outputFailed_ = false;
    bool errorIsTerminal_ = false;
};

// From here on Ctrl+C, termination and a closed console window ask the program to stop instead of ending it, and a
// closed pipe is an error of its write.
void WatchForStop();
bool StopRequested();

} // namespace quorvex::cli
