#include "format/data_page.h"
#include "jet_support.h"

#include "format/header.h"
#include "jet/check.h"
#include "jet/memory_storage.h"
#include "tables/index_scan.h"

#include <gtest/gtest.h>

#include <random>

namespace jet {
namespace {

using namespace testing;

// The same code reads the same bytes everywhere; the emulated platform throws exceptions slowly and gets a smaller
// share.
#ifdef _WIN32
constexpr int kRounds = 40;
constexpr std::size_t kPageStep = 5;
#else
constexpr int kRounds = 600;
constexpr std::size_t kPageStep = 1;
#endif

/// Everything there is to read, as one text; throws Error.
std::string ReadAll(Storage& storage) {
    Database db = OpenMemory(storage);
    std::string all;
    for (const std::u16string& name : db.TableNames()) {
        const Table table = db.OpenTable(name);
        Cursor cursor = table.Rows();
        while (cursor.Next()) {
            for (const Value& value : Values(cursor.Current(), table.definition())) all += Show(value) + "\t";
        }
    }
    for (const char16_t* key : {u"CR2 9AA", u"M1  9AA", u"B33 9AA", u"SW1A9AA", u"AB109AA", u"PE139AE", u"L1  9AA"}) {
        Cursor cursor = db.Select(u"SELECT * FROM PAF_FULLAddress WHERE FT_Postcode='" + std::u16string(key) + u"'");
        all += cursor.Next() ? Show(cursor.Current().Get(1)) : "none";
    }
    return all;
}

class DamageTest : public ::testing::Test {
  protected:
    DamageTest() : good_(ReadBytes(Sample("PAF_FULL.dat"))) {
        storage_.Put("db", good_);
        truth_ = ReadAll(storage_);
    }

    /// Reads a damaged copy: the whole truth or an error, never anything else.
    bool IsRefused(const Bytes& bytes, const std::string& what) {
        storage_.Put("db", bytes);
        try {
            EXPECT_TRUE(ReadAll(storage_) == truth_) << "wrong answer: " << what;
            return false;
        } catch (const Error& error) {
            EXPECT_NE(error.code(), ErrorCode::kUsage) << what;
            return true;
        }
    }

    MemoryStorage storage_;
    Bytes good_;
    std::string truth_;
};

TEST_F(DamageTest, EachPageOfNoiseOrZerosGivesAnErrorOrTheWholeTruth) {
    std::mt19937 random(11);
    std::size_t refused = 0;
    const std::size_t pages = good_.size() / kPageSize;
    for (std::size_t page = 0; page < pages; page += kPageStep) {
        for (const bool zeros : {true, false}) {
            Bytes bytes = good_;
            for (std::size_t i = 0; i < kPageSize; ++i) {
                bytes[page * kPageSize + i] = zeros ? Byte{0} : static_cast<Byte>(random());
            }
            refused += IsRefused(bytes, "page " + std::to_string(page)) ? 1U : 0U;
            const bool open = !CodeOf([&] { OpenMemory(storage_); });
            if (open) CheckIntegrity(OpenMemory(storage_));
        }
    }
    // Most pages hold something; the rest belongs to system tables that no look-up reads.
    EXPECT_GT(refused, pages / kPageStep);
}

TEST_F(DamageTest, AShortenedFileGivesAnErrorOrTheWholeTruth) {
    for (std::size_t size = 0; size < good_.size(); size += kPageSize * 3 / 2) {
        const Bytes bytes(good_.begin(), good_.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_TRUE(IsRefused(bytes, std::to_string(size) + " bytes"));
    }
}

TEST_F(DamageTest, SingleWrongBytesNeverCrashNorHang) {
    std::mt19937 random(12);
    for (int round = 0; round < kRounds; ++round) {
        Bytes bytes = good_;
        for (int n = 0; n < 1 + round % 3; ++n) bytes[random() % bytes.size()] = static_cast<Byte>(random());
        storage_.Put("db", bytes);
        CodeOf([&] { ReadAll(storage_); });
        CodeOf([&] { CheckIntegrity(OpenMemory(storage_)); });
    }
}

TEST_F(DamageTest, CirclesAreFound) {
    Database db = OpenMemory(storage_);
    const Table table = db.OpenTable(u"PAF_FULLAddress");
    const TableDef& def = table.definition();
    const auto at = [](PageNo page) { return static_cast<std::size_t>(page) * kPageSize; };
    const auto expectRefused = [&](const char* what, const auto& damage) {
        Bytes bytes = good_;
        damage(bytes.data());
        EXPECT_TRUE(IsRefused(bytes, what)) << what;
    };
    expectRefused("definition", [&](Byte* file) { Store32(file + at(def.page) + 4, def.page); });
    const Index& index = def.indexes[0];
    const IndexPage root(Insides::PagerOf(db)->Read(index.root), def.page);
    ASSERT_FALSE(root.isLeaf());
    expectRefused("child", [&](Byte* file) {
        for (std::size_t i = 0; i < kIndexArea - 4; ++i) {
            Byte* const p = file + at(index.root) + kIndexEntries + i;
            if (Load32Big(p) == root.Child(0)) Store32Big(p, index.root);
        }
        Store32(file + at(index.root) + kIndexTail, index.root);
    });
    const RowId big = *table.FindFirst(u"FT_Postcode='M1  9AA'");
    const Row row = table.Fetch(big);
    const std::uint32_t pointer = Load32(row.Stored(1)->data() + 4);
    const RowId first = RowIdFromPointer(pointer);
    expectRefused("memo", [&](Byte* file) {
        const std::size_t slot = Load16(file + at(first.page) + kDataSlots + 2 * first.slot) & kSlotStart;
        Store32(file + at(first.page) + slot, pointer);
    });
    Cursor cursor = table.Rows();
    bool moved = false;
    while (!moved && cursor.Next()) {
        const RowId id = cursor.Current().id();
        const RowBody body = FollowRow(*Insides::PagerOf(db), def.page, id);
        if (body.id == id) continue;
        moved = true;
        expectRefused("moved row", [&](Byte* file) {
            const std::size_t slot = Load16(file + at(id.page) + kDataSlots + 2 * id.slot) & kSlotStart;
            Store32(file + at(id.page) + slot, PointerFromRowId(id));
        });
    }
    EXPECT_TRUE(moved);
    // A leaf linked to itself is met by whoever runs along the leaves.
    IndexScan scan(*Insides::PagerOf(db), def.page, index.root, {{}, kBeforeAllRows});
    const PageNo leaf = root.Child(0);
    Bytes bytes = good_;
    Store32(bytes.data() + at(leaf) + kIndexNext, leaf);
    storage_.Put("db", bytes);
    Database damaged = OpenMemory(storage_);
    EXPECT_EQ(CodeOf([&] {
                  IndexScan along(*Insides::PagerOf(damaged), def.page, index.root, {{}, kBeforeAllRows});
                  while (along.Next()) continue;
              }),
              ErrorCode::kCorrupt);
}

TEST_F(DamageTest, OtherFilesAreRefusedEachForItsOwnReason) {
    const auto codeOf = [&](const auto& change) {
        Bytes bytes = good_;
        change(bytes);
        storage_.Put("db", bytes);
        return CodeOf([&] { OpenMemory(storage_); });
    };
    EXPECT_EQ(codeOf([](Bytes& b) { b[0x14] = 0; }), ErrorCode::kUnsupportedVersion);
    EXPECT_EQ(codeOf([](Bytes& b) { b[0x14] = 2; }), ErrorCode::kUnsupportedVersion);
    EXPECT_EQ(codeOf([](Bytes& b) { std::copy_n("Standard ACE DB", 16, b.begin() + 4); }),
              ErrorCode::kUnsupportedVersion);
    EXPECT_EQ(codeOf([](Bytes& b) { b[5] = 'x'; }), ErrorCode::kNotADatabase);
    EXPECT_EQ(codeOf([](Bytes& b) { b.clear(); }), ErrorCode::kNotADatabase);
    EXPECT_EQ(codeOf([](Bytes& b) { b.resize(100000); }), ErrorCode::kTruncated);
    EXPECT_EQ(codeOf([](Bytes& b) { b.resize(2 * kPageSize); }), ErrorCode::kTruncated);
    EXPECT_EQ(codeOf([](Bytes& b) { b[0x3E] ^= 1; }), ErrorCode::kEncrypted);
    EXPECT_EQ(codeOf([](Bytes& b) { b[0x42] ^= 1; }), ErrorCode::kWrongPassword);
    storage_.Put("db", good_);
    OpenOptions options;
    options.storage = &storage_;
    EXPECT_EQ(CodeOf([&] { Database::Open("db", u"Lanternfox", options); }), ErrorCode::kWrongPassword);
    EXPECT_EQ(CodeOf([&] { Database::Open("nothing", u"", options); }), ErrorCode::kFileNotFound);
}

TEST_F(DamageTest, TheCheckerSeesWhatIsWrong) {
    MemoryStorage storage;
    const auto faultsAfter = [&](const auto& damage) {
        Bytes bytes = good_;
        damage(bytes.data());
        storage.Put("db", bytes);
        return ErrorsOf(CheckIntegrity(OpenMemory(storage)));
    };
    storage_.Put("db", good_);
    Database db = OpenMemory(storage_);
    const Table table = db.OpenTable(u"PAF_FULLAddress");
    const TableDef& def = table.definition();
    Cursor cursor = table.Rows();
    ASSERT_TRUE(cursor.Next());
    const RowId id = cursor.Current().id();
    const std::size_t page = static_cast<std::size_t>(id.page) * kPageSize;
    const std::size_t slot = page + kDataSlots + 2 * id.slot;
    EXPECT_NE(faultsAfter([&](Byte* f) { Store16(f + slot, Load16(f + slot) | kSlotDeleted); }), "");
    EXPECT_NE(faultsAfter([&](Byte* f) { Store16(f + page + kDataFree, 5); }), "");
    const std::size_t root = static_cast<std::size_t>(def.indexes[0].root) * kPageSize;
    EXPECT_NE(faultsAfter([&](Byte* f) { f[root + kIndexEntries + 2] ^= 1; }), "");
    EXPECT_NE(faultsAfter([&](Byte* f) {
                  f[kPageSize + 4096 - 69 + 5 + id.page / 8] |= static_cast<Byte>(1U << (id.page % 8));
              }),
              "");
    EXPECT_EQ(faultsAfter([](Byte*) {}), "");
}

} // namespace
} // namespace jet
