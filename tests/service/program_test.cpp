#include <gtest/gtest.h>
#include <httplib.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace quorvex::service {
namespace {

// The program itself, its output read through a pipe.
class Program {
  public:
    explicit Program(std::vector<std::string> arguments) {
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe(ends.data()), 0);
        id_ = fork();
        if (id_ == 0) {
            dup2(ends[1], STDOUT_FILENO);
            dup2(ends[1], STDERR_FILENO);
            close(ends[0]);
            close(ends[1]);
            arguments.insert(arguments.begin(), QUORVEX_SERVICE);
            std::vector<char*> pointers;
            for (std::string& argument : arguments) pointers.push_back(argument.data());
            pointers.push_back(nullptr);
            execv(QUORVEX_SERVICE, pointers.data());
            _exit(127);
        }
        close(ends[1]);
        output_ = fdopen(ends[0], "r");
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() {
        if (id_ > 0) kill(id_, SIGKILL);
        if (id_ > 0) waitpid(id_, nullptr, 0);
        fclose(output_);
    }

    // Empty at the end of the output.
    std::string Line() {
        std::array<char, 1000> line{};
        if (fgets(line.data(), static_cast<int>(line.size()), output_) == nullptr) return {};
        return std::string(line.data());
    }
    void Signal(int signal) { kill(id_, signal); }
    // -1 when a signal ended it.
    int ExitCode() {
        int status = 0;
        waitpid(id_, &status, 0);
        id_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    pid_t id_ = 0;
    FILE* output_ = nullptr;
};

constexpr char kData[] = QUORVEX_TEST_DATA "/sample";

TEST(Program, AnswersUntilItIsToldToEnd) {
    for (const int signal : {SIGTERM, SIGINT}) {
        Program program({"--data", kData, "--port", "0"});
        const std::string line = program.Line();
        ASSERT_TRUE(line.starts_with("listening on http://127.0.0.1:")) << line;
        const std::string port = line.substr(line.rfind(':') + 1);
        httplib::Client client("127.0.0.1", std::stoi(port));
        const httplib::Result reply = client.Get("/XMLService/GetLookups.aspx?datatype=1");
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->status, 200);

        Program second({"--data", kData, "--port", std::to_string(std::stoi(port))});
        EXPECT_TRUE(second.Line().starts_with("quorvex-service: cannot listen on http://127.0.0.1:"));
        EXPECT_EQ(second.ExitCode(), 1);

        program.Signal(signal);
        EXPECT_EQ(program.ExitCode(), 0);
        EXPECT_EQ(program.Line(), "");
    }
}

TEST(Program, WrongArgumentsAndFolders) {
    Program none({});
    EXPECT_EQ(none.Line(), "quorvex-service: --data is missing\n");
    EXPECT_EQ(none.ExitCode(), 1);
    Program noData({"--data", QUORVEX_TEST_DATA "/nowhere", "--port", "0"});
    EXPECT_TRUE(noData.Line().starts_with("quorvex-service: no data files in "));
    EXPECT_EQ(noData.ExitCode(), 1);
    Program noKeys({"--data", kData, "--port", "0", "--keys", QUORVEX_TEST_DATA "/nowhere"});
    EXPECT_TRUE(noKeys.Line().starts_with("quorvex-service: "));
    EXPECT_EQ(noKeys.ExitCode(), 1);
    Program help({"--help"});
    EXPECT_TRUE(help.Line().starts_with("usage: "));
    EXPECT_EQ(help.ExitCode(), 0);
}

} // namespace
} // namespace quorvex::service
