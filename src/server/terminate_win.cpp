#include <cstdlib>

namespace __gnu_cxx {

// Takes the place of the library's handler, which would bring in a demangler and write to the host's standard error.
void __verbose_terminate_handler() { // NOLINT(bugprone-reserved-identifier)
    std::abort();
}

} // namespace __gnu_cxx
