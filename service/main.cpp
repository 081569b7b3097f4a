#include "service/service.h"
#include "support/error.h"
#include "support/text.h"

#include <csignal>
#include <exception>
#include <iostream>

namespace {

using namespace quorvex;

int Run(const std::vector<std::string>& arguments) {
    const service::Options options = service::ParseOptions(arguments);
    if (options.help) {
        std::cout << service::kUsage;
        return 0;
    }
    // Blocked before any thread begins, so that only the wait below gets them.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    service::Service service(options);
    service.Start();
    std::cout << "listening on " << service.Address() << std::endl;
    int signal = 0;
    sigwait(&signals, &signal);
    service.Stop();
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
