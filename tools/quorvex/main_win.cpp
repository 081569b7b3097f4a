#include "quorvex/program.h"

#include "support/text.h"

int wmain(int argc, wchar_t** argv) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) arguments.push_back(quorvex::support::ToUtf8(argv[i]));
    return quorvex::cli::RunProgram(std::move(arguments));
}
