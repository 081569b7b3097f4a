#include "support/file_lock.h"
#include "testing/temp_folder.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::testing {
namespace {

// Two programs on one data folder: the second is kept out while the first works, and let in when the first was killed.
TEST(LockKill, AKilledHolderLetsTheNextIn) {
    TempFolder folder;
    const std::wstring path = folder.File(L"Update.lock");
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        const auto lock = support::FileLock::TryAcquire(path);
        const char held = lock ? 'y' : 'n';
        if (write(ends[1], &held, 1) != 1) _exit(1);
        pause();
        _exit(0);
    }
    char held = 0;
    ASSERT_EQ(read(ends[0], &held, 1), 1);
    EXPECT_EQ(held, 'y');
    EXPECT_FALSE(support::FileLock::TryAcquire(path));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_TRUE(support::FileLock::TryAcquire(path));
    close(ends[0]);
    close(ends[1]);
}

} // namespace
} // namespace quorvex::testing
