#include "service/accounts_command.h"
#include "service/notify.h"
#include "service/service.h"
#include "support/error.h"
#include "support/text.h"

#include <csignal>
#include <exception>
#include <iostream>
#include <sys/resource.h>

namespace {

using namespace quorvex;

// Each connection takes a descriptor; the system's soft limit is for programs with few.
void RaiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

int Serve(const service::Options& options) {
    // Blocked before any thread begins, so that only the wait below gets them.
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    RaiseDescriptorLimit();

    service::Service service(options);
    service.Start();
    std::cout << "listening on " << service.Address() << std::endl;
    service::NotifyManager("READY=1");
    for (int signal = 0; sigwait(&signals, &signal) == 0 && signal == SIGHUP;) {
        service::NotifyManager("RELOADING=1");
        service.Reload();
        service::NotifyManager("READY=1");
    }
    service::NotifyManager("STOPPING=1");
    service.Stop();
    return 0;
}

int Run(const std::vector<std::string>& arguments) {
    if (!arguments.empty() && arguments[0] == "accounts")
        return service::RunAccountsCommand({arguments.begin() + 1, arguments.end()});
    const service::Options options = service::ParseOptions(arguments);
    if (options.text.empty()) return Serve(options);
    std::cout << options.text;
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const support::Error& error) {
        std::cerr << "quorvex-service: " << support::ToUtf8(error.Description()) << "\n";
    } catch (const std::exception& error) {
        std::cerr << "quorvex-service: " << error.what() << "\n";
    }
    std::cerr << "try quorvex-service --help\n";
    return 1;
}
