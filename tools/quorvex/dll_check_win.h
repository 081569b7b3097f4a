#pragma once

#include <string>
#include <vector>

namespace quorvex::cli {

struct DllFault {
    bool harmless = false;
    std::wstring what;
    std::wstring advice; // empty: repair the registration
};

struct DllState {
    bool usable = false; // present, of the right bitness, with all that it imports
    std::wstring version;
    std::wstring signature; // "signed by ...", "not signed"
    std::vector<DllFault> faults;
};

// A registered DLL. Nothing is loaded: a DLL of the other bitness can be examined.
DllState CheckDll(const std::wstring& path, bool expect64Bit);

// "2.4": the version under which this program's release registers the type library.
std::wstring LibraryVersion();

} // namespace quorvex::cli
