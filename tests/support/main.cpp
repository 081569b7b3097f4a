#include "support/log_writer.h"

#include <gtest/gtest.h>

#include <string>

// With "--write-log FOLDER WRITER LINES" the program is one of the processes that write to a shared log.
int main(int argc, char** argv) {
    if (argc == 5 && std::string(argv[1]) == "--write-log") {
        return quorvex::testing::WriteLog(argv[2], argv[3], std::stoi(argv[4]));
    }
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
