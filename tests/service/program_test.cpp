#include <gtest/gtest.h>
#include <httplib.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <utility>

namespace quorvex::service {
namespace {

// The program itself, its output read through a pipe.
class Program {
  public:
    explicit Program(const std::string& arguments)
        : output_(popen(("echo $$; exec " QUORVEX_SERVICE " " + arguments + " 2>&1").c_str(), "r")),
          id_(std::stoi(Line())) {}
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() {
        if (output_ == nullptr) return;
        Signal(SIGKILL);
        pclose(output_);
    }

    // Empty at the end of the output.
    std::string Line() {
        std::array<char, 1000> line{};
        if (fgets(line.data(), static_cast<int>(line.size()), output_) == nullptr) return {};
        return std::string(line.data());
    }
    void Signal(int signal) { kill(id_, signal); }
    // After the end of its output; -1 when a signal ended it.
    int ExitCode() {
        const int status = pclose(std::exchange(output_, nullptr));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    FILE* output_;
    pid_t id_;
};

const std::string kData = "--data " QUORVEX_TEST_DATA "/sample ";

TEST(Program, AnswersUntilItIsToldToEnd) {
    for (const int signal : {SIGTERM, SIGINT}) {
        Program program(kData + "--port 0");
        const std::string line = program.Line();
        ASSERT_TRUE(line.starts_with("listening on http://127.0.0.1:")) << line;
        const std::string port = line.substr(line.rfind(':') + 1, line.size() - line.rfind(':') - 2);
        httplib::Client client("127.0.0.1", std::stoi(port));
        while (client.Get("/health")->status != 200) std::this_thread::yield();
        const httplib::Result reply = client.Get("/XMLService/GetLookups.aspx?datatype=1");
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->status, 200);

        Program second(kData + "--port " + port);
        EXPECT_TRUE(second.Line().starts_with("quorvex-service: cannot listen on http://127.0.0.1:"));
        EXPECT_EQ(second.ExitCode(), 1);

        program.Signal(signal);
        EXPECT_EQ(program.Line(), "");
        EXPECT_EQ(program.ExitCode(), 0);
    }
}

TEST(Program, WrongArgumentsAndFolders) {
    const struct {
        std::string arguments, firstLine;
        int exitCode;
    } cases[] = {{"", "quorvex-service: --data is missing\n", 1},
                 {"--data " QUORVEX_TEST_DATA "/nowhere --port 0", "quorvex-service: no data files in ", 1},
                 {kData + "--port 0 --keys " QUORVEX_TEST_DATA "/nowhere", "quorvex-service: ", 1},
                 {"--help", "Answers the pages", 0},
                 {"--version", "quorvex-service 2", 0}};
    for (const auto& [arguments, firstLine, exitCode] : cases) {
        Program program(arguments);
        EXPECT_TRUE(program.Line().starts_with(firstLine)) << arguments;
        while (!program.Line().empty()) {
        }
        EXPECT_EQ(program.ExitCode(), exitCode) << arguments;
    }
}

} // namespace
} // namespace quorvex::service
