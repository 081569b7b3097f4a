#include "support/error.h"
#include "zip/zip_archive.h"
#include "zip/zip_name.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

// Any bytes are an archive that is refused, or one whose entries have safe names and unpack to what they promise.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvex::zip;
    try {
        ZipArchive archive;
        archive.Open(std::make_unique<ZipMemorySource>(std::string(reinterpret_cast<const char*>(data), size)));
        for (const ZipEntry& entry : archive.Entries()) {
            if (!IsPlainFileName(entry.name)) std::abort();
            std::uint64_t unpacked = 0;
            bool whole = true;
            try {
                archive.Unpack(entry, [&](std::string_view bytes) { unpacked += bytes.size(); });
            } catch (const quorvex::support::Error&) {
                whole = false;
            }
            if (unpacked > entry.unpackedSize) std::abort();
            if (whole && unpacked != entry.unpackedSize) std::abort();
        }
    } catch (const quorvex::support::Error&) { // refused in words
    }
    return 0;
}
