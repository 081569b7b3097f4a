#include "support/child_process.h"

#include "support/text.h"

#include <array>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace quorvex::testing {

ChildProcess::ChildProcess(const std::wstring& arguments) {
    std::string program = "/proc/self/exe";
    std::vector<std::string> words;
    std::wstring rest = arguments;
    while (!rest.empty()) words.push_back(support::ToUtf8(support::NextField(rest, L" ", true)));
    std::vector<char*> pointers = {program.data()};
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        execv(program.c_str(), pointers.data());
        _exit(127);
    }
    id_ = child > 0 ? child : 0;
}

ChildProcess::~ChildProcess() {
    if (id_ != 0) Wait();
}

int ChildProcess::Wait() {
    int status = 0;
    const pid_t child = static_cast<pid_t>(id_);
    id_ = 0;
    if (child == 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

} // namespace quorvex::testing
