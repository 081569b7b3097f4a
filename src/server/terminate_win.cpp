#include <cstdlib>

namespace __gnu_cxx {

// Takes the place of the library's handler, which would bring in a demangler and write to the host's standard error.
void __verbose_terminate_handler() {
    std::abort();
}

} // namespace __gnu_cxx
