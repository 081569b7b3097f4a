#include "quorvex/program.h"

int main(int argc, char** argv) {
    return quorvex::cli::RunProgram(std::vector<std::string>(argv + 1, argv + argc));
}
