#include "support/files.h"
#include "support/text.h"
#include "zip/zip_archive.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <zlib.h>

// Unpacking a package of the size of a large monthly update into a folder: ours, the unzip command, and zlib alone on
// the same deflate data (what no reader can be faster than).

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kUnpackedSize = std::size_t{48} << 20U;

// Pages like those of a data file: repeated words, some numbers, free space at the end of each page.
std::string DataLikeBytes() {
    std::mt19937 random(7);
    std::string bytes;
    bytes.reserve(kUnpackedSize);
    while (bytes.size() < kUnpackedSize) {
        std::string page(4096, '\0');
        const std::size_t used = 2500 + random() % 1500;
        for (std::size_t at = 0; at + 12 < used; at += 12) {
            const int length =
                std::snprintf(page.data() + at, 13, "%c%c%u ROAD|", static_cast<int>('A' + random() % 26),
                              static_cast<int>('A' + random() % 26), static_cast<unsigned>(random() % 999));
            page[at + static_cast<std::size_t>(length)] = static_cast<char>('A' + random() % 26);
        }
        bytes += page;
    }
    return bytes;
}

struct Package {
    Package() {
        folder = fs::temp_directory_path() / ("quorvex-zip-bench-" + std::to_string(std::random_device{}()));
        fs::create_directories(folder / "out");
        const fs::path plain = folder / "UPDATE_F_20260131.dat";
        std::ofstream(plain, std::ios::binary) << DataLikeBytes();
        archive = folder / "UPDATE_F_20260131.zip";
        const std::string command =
            "cd '" + folder.string() + "' && zip -q UPDATE_F_20260131.zip UPDATE_F_20260131.dat";
        if (std::system(command.c_str()) != 0) std::abort();
        fs::remove(plain);
    }
    ~Package() { fs::remove_all(folder); }

    fs::path folder;
    fs::path archive;
};

const Package& ThePackage() {
    static const Package package;
    return package;
}

void BM_Extract(benchmark::State& state) {
    const std::wstring archive = quorvex::support::FromPath(ThePackage().archive);
    const std::wstring out = quorvex::support::FromPath(ThePackage().folder / "out");
    for (auto _ : state) {
        quorvex::zip::ZipArchive zip;
        zip.Open(archive);
        zip.Extract(out, true);
        zip.Close();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kUnpackedSize));
}
BENCHMARK(BM_Extract)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_UnzipCommand(benchmark::State& state) {
    const std::string command =
        "unzip -qo '" + ThePackage().archive.string() + "' -d '" + (ThePackage().folder / "out").string() + "'";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) state.SkipWithError("unzip failed");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kUnpackedSize));
}
BENCHMARK(BM_UnzipCommand)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ZlibAlone(benchmark::State& state) {
    quorvex::zip::ZipArchive zip;
    zip.Open(quorvex::support::FromPath(ThePackage().archive));
    const quorvex::zip::ZipEntry& entry = zip.Entries().front();
    std::string packed = quorvex::support::ReadFileBytes(quorvex::support::FromPath(ThePackage().archive))
                             .substr(entry.dataOffset, entry.packedSize);
    std::string plain(kUnpackedSize + 4096, '\0');
    for (auto _ : state) {
        z_stream stream{};
        if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) std::abort();
        stream.next_in = reinterpret_cast<Bytef*>(packed.data());
        stream.avail_in = static_cast<uInt>(packed.size());
        stream.next_out = reinterpret_cast<Bytef*>(plain.data());
        stream.avail_out = static_cast<uInt>(plain.size());
        if (inflate(&stream, Z_FINISH) != Z_STREAM_END) std::abort();
        inflateEnd(&stream);
        benchmark::DoNotOptimize(plain.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kUnpackedSize));
}
BENCHMARK(BM_ZlibAlone)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
