#include "support/text.h"
#include "update/update_list.h"

#include <cstdint>
#include <cstdlib>
#include <string>

// Any text is a list of at most so many packages, and no address of it leads to a file name outside the one form.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvex::update;
    const std::wstring list = quorvex::support::FromUtf8({reinterpret_cast<const char*>(data), size});
    const auto packages = ParseUpdateList(list);
    if (packages.size() > kMostListedPackages) std::abort();
    for (const ListedPackage& package : packages) {
        if (package.address.empty()) std::abort();
        const std::wstring name = PackageFileName(package.address);
        if (name.empty()) continue;
        const bool plain = name.find_first_of(L"\\/:%.") == name.size() - 4 && name.starts_with(L"UPDATE_");
        if (!plain || name.size() != 21) std::abort();
    }
    return 0;
}
