#include "quorvex/pe_file.h"

#include <cstddef>
#include <stdexcept>

namespace quorvex::cli {
namespace {

constexpr std::uint32_t kPeSignature = 0x00004550;
constexpr std::uint16_t kMagic64 = 0x20B;
constexpr std::uint16_t kMachine386 = 0x14C;
constexpr std::uint16_t kMachineAmd64 = 0x8664;
constexpr std::uint16_t kIsDll = 0x2000;
constexpr std::size_t kFileHeader = 20;
constexpr std::size_t kSectionHeader = 40;
constexpr std::size_t kImportDescriptor = 20;
constexpr std::size_t kImportDirectory = 1;
constexpr std::size_t kSecurityDirectory = 4;
constexpr std::size_t kMostImports = 1000;
constexpr char kVersionSignature[] = "\xBD\x04\xEF\xFE";

// Little-endian numbers at places of the file; a place outside ends the reading.
class Bytes {
  public:
    explicit Bytes(const std::string& bytes) : bytes_(bytes) {}
    std::uint16_t Word(std::size_t at) const { return static_cast<std::uint16_t>(Byte(at) | Byte(at + 1) << 8); }
    std::uint32_t Long(std::size_t at) const { return Word(at) | static_cast<std::uint32_t>(Word(at + 2)) << 16; }
    std::string Text(std::size_t at) const {
        std::string text;
        for (; Byte(at) != 0; ++at) text.push_back(static_cast<char>(Byte(at)));
        return text;
    }

  private:
    std::uint32_t Byte(std::size_t at) const { return static_cast<unsigned char>(bytes_.at(at)); }
    const std::string& bytes_;
};

struct Layout {
    std::size_t header = 0; // of the file
    std::size_t optional = 0;
    std::size_t directories = 0;
    std::size_t sections = 0;
    std::uint16_t sectionCount = 0;
};

// Place in the file of an address in memory.
std::size_t PlaceOf(const Bytes& file, const Layout& layout, std::uint32_t address) {
    for (std::size_t i = 0; i < layout.sectionCount; ++i) {
        const std::size_t section = layout.sections + i * kSectionHeader;
        const std::uint32_t start = file.Long(section + 12);
        if (address >= start && address - start < file.Long(section + 16)) {
            return file.Long(section + 20) + static_cast<std::size_t>(address - start);
        }
    }
    throw std::out_of_range("address");
}

std::vector<std::string> ReadImports(const Bytes& file, const Layout& layout) {
    std::vector<std::string> imports;
    const std::uint32_t address = file.Long(layout.directories + kImportDirectory * 8);
    if (address == 0) return imports;
    std::size_t at = PlaceOf(file, layout, address);
    for (; imports.size() < kMostImports && file.Long(at + 12) != 0; at += kImportDescriptor) {
        imports.push_back(file.Text(PlaceOf(file, layout, file.Long(at + 12))));
    }
    return imports;
}

// The fixed part of the version resource is found by its signature.
std::string ReadVersion(const Bytes& file, const std::string& bytes) {
    const std::size_t at = bytes.find(kVersionSignature, 0, 4);
    if (at == std::string::npos) return {};
    const std::uint32_t high = file.Long(at + 8);
    const std::uint32_t low = file.Long(at + 12);
    return std::to_string(high >> 16) + "." + std::to_string(high & 0xFFFF) + "." + std::to_string(low >> 16) + "." +
           std::to_string(low & 0xFFFF);
}

} // namespace

std::optional<PeFile> ReadPeFile(const std::string& bytes) {
    try {
        const Bytes file(bytes);
        if (!bytes.starts_with("MZ")) return std::nullopt;
        Layout layout;
        layout.header = file.Long(0x3C);
        if (file.Long(layout.header) != kPeSignature) return std::nullopt;
        layout.header += 4;
        const std::uint16_t machine = file.Word(layout.header);
        if (machine != kMachine386 && machine != kMachineAmd64) return std::nullopt;
        layout.optional = layout.header + kFileHeader;
        const bool is64Bit = file.Word(layout.optional) == kMagic64;
        layout.directories = layout.optional + (is64Bit ? 112U : 96U);
        layout.sections = layout.optional + file.Word(layout.header + 16);
        layout.sectionCount = file.Word(layout.header + 2);
        PeFile pe;
        pe.is64Bit = is64Bit;
        pe.isDll = (file.Word(layout.header + 18) & kIsDll) != 0;
        pe.hasSignature = file.Long(layout.directories + kSecurityDirectory * 8) != 0;
        pe.imports = ReadImports(file, layout);
        pe.version = ReadVersion(file, bytes);
        return pe;
    } catch (const std::out_of_range&) { // cut off, or places that lead nowhere
        return std::nullopt;
    }
}

} // namespace quorvex::cli
