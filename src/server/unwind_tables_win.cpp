// 32-bit only: keeps our exceptions working in hosts that carry the compiler's shared library.
#ifdef __i386__

#include <windows.h>

#include <cstring>

extern "C" {
extern IMAGE_DOS_HEADER __ImageBase;                         // of this DLL, set by the linker
void __register_frame_info(const void* begin, void* object); // of the unwinder that is linked in
void* __deregister_frame_info(const void* begin);
}

namespace {

// The compiler's start-up code registers our unwind tables with libgcc_s_dw2-1.dll if the host has loaded that, and
// with our own unwinder only if not. But our own is the one that runs when we throw: without the tables it ends the
// process.
class UnwindTables {
  public:
    UnwindTables() {
        if (GetModuleHandleW(L"libgcc_s_dw2-1.dll") == nullptr) return;
        const void* const begin = Section(".eh_frame");
        if (begin == nullptr) return;
        __register_frame_info(begin, object_);
        registered_ = begin;
    }
    ~UnwindTables() {
        if (registered_ != nullptr) __deregister_frame_info(registered_);
    }
    UnwindTables(const UnwindTables&) = delete;
    UnwindTables& operator=(const UnwindTables&) = delete;

  private:
    // Names of sections are cut off at eight characters.
    static const void* Section(const char* name) {
        const auto* const base = reinterpret_cast<const char*>(&__ImageBase);
        const auto* const header = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + __ImageBase.e_lfanew);
        // The section headers follow the optional header.
        const auto* const sections = reinterpret_cast<const IMAGE_SECTION_HEADER*>(
            reinterpret_cast<const char*>(&header->OptionalHeader) + header->FileHeader.SizeOfOptionalHeader);
        for (WORD i = 0; i < header->FileHeader.NumberOfSections; ++i) {
            const auto* const found = reinterpret_cast<const char*>(sections[i].Name);
            if (std::strncmp(found, name, IMAGE_SIZEOF_SHORT_NAME) == 0) return base + sections[i].VirtualAddress;
        }
        return nullptr;
    }

    void* object_[16] = {}; // the unwinder's own record of the tables; it needs six pointers
    const void* registered_ = nullptr;
};

const UnwindTables tables;

} // namespace

#endif
