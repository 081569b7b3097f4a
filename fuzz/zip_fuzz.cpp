#include "support/error.h"
#include "zip/zip_archive.h"
#include "zip/zip_name.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <ostream>
#include <sstream>
#include <streambuf>

namespace {

// Takes what is unpacked and only counts it.
class CountingBuffer final : public std::streambuf {
  public:
    std::uint64_t count = 0;

  protected:
    std::streamsize xsputn(const char*, std::streamsize length) override {
        count += static_cast<std::uint64_t>(length);
        return length;
    }
    int_type overflow(int_type c) override {
        ++count;
        return traits_type::not_eof(c);
    }
};

} // namespace

// Any bytes are an archive that is refused, or one whose entries have safe names and unpack to what they promise.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvex::localdata;
    try {
        ZipArchive archive;
        archive.Open(std::make_unique<std::istringstream>(std::string(reinterpret_cast<const char*>(data), size)));
        for (const ZipEntry& entry : archive.Entries()) {
            if (!IsPlainFileName(entry.name)) std::abort();
            CountingBuffer buffer;
            std::ostream target(&buffer);
            bool whole = true;
            try {
                archive.Unpack(entry, target);
            } catch (const quorvex::support::Error&) {
                whole = false;
            }
            if (buffer.count > entry.unpackedSize) std::abort();
            if (whole && buffer.count != entry.unpackedSize) std::abort();
        }
    } catch (const quorvex::support::Error&) { // refused in words
    }
    return 0;
}
