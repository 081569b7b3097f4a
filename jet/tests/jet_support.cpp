#include "jet_support.h"

#include <gtest/gtest.h>

#include <charconv>
#include <fstream>
#include <random>

namespace jet::testing {

std::filesystem::path Sample(const char* name) {
    return std::filesystem::path(QUORVEX_TEST_DATA) / "sample" / name;
}

Bytes ReadBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << path;
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteBytes(const std::filesystem::path& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    for (const Byte byte : bytes) out.put(static_cast<char>(byte));
    EXPECT_TRUE(out) << path;
}

std::vector<std::vector<std::string>> ReadTruth(const char* name) {
    std::ifstream in(Sample("truth") / name, std::ios::binary);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(in, line);) {
        std::vector<std::string> row(1);
        for (const char c : line) {
            if (c == '\t') {
                row.emplace_back();
            } else {
                row.back() += c;
            }
        }
        rows.push_back(std::move(row));
    }
    EXPECT_GT(rows.size(), 1U) << "no truth in " << name;
    if (!rows.empty()) rows.erase(rows.begin());
    return rows;
}

std::u16string Equals(std::u16string_view column, std::u16string_view text) {
    std::u16string out = u"[";
    out.append(column).append(u"]='").append(text).append(u"'");
    return out;
}

std::string Show(const Value& value) {
    if (const auto* text = std::get_if<std::u16string>(&value)) return ToUtf8(*text);
    if (const auto* whole = std::get_if<std::int32_t>(&value)) return std::to_string(*whole);
    if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "1" : "0";
    if (const auto* real = std::get_if<double>(&value)) {
        std::array<char, 40> buffer;
        const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), *real).ptr;
        return std::string(buffer.data(), end);
    }
    return IsNull(value) ? "\\N" : "?";
}

std::vector<Value> Values(const Row& row, const TableDef& def) {
    std::vector<Value> values;
    for (std::size_t i = 0; i < def.columns.size(); ++i) values.push_back(row.Get(i));
    return values;
}

Database OpenMemory(Storage& storage, bool writable) {
    OpenOptions options;
    options.storage = &storage;
    options.writable = writable;
    return Database::Open("db", kPassword, options);
}

Folder::Folder() {
    static int count = 0;
    std::random_device source;
    path_ = std::filesystem::temp_directory_path() /
            ("jet-test-" + std::to_string(source()) + "-" + std::to_string(++count));
    std::filesystem::create_directories(path_);
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

} // namespace jet::testing
