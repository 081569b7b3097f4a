#include "testing/guard.h"

int main(int argc, char** argv) {
    return quorvex::testing::RunTests(argc, argv);
}
