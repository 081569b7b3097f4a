#include "jet_support.h"

#include "format/text_codec.h"
#include "jet/check.h"
#include "jet/memory_storage.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace jet {
namespace {

using namespace testing;

OpenOptions InMemory(Storage& storage) {
    OpenOptions options;
    options.storage = &storage;
    return options;
}

TableSpec AddressSpec() {
    TableSpec wanted;
    wanted.name = u"PAF_FULLAddress";
    wanted.columns = {{.name = u"FT_Postcode", .length = 10},
                      {.name = u"FT_Address", .type = ColumnType::kMemo},
                      {.name = u"FT_Update", .length = 8}};
    wanted.indexes = {{.name = u"PrimaryKey", .columns = {u"FT_Postcode"}, .primary = true}};
    return wanted;
}

/// Columns and indexes of many kinds.
TableSpec MixedSpec() {
    using enum ColumnType;
    TableSpec wanted;
    wanted.name = u"Mixed";
    wanted.columns = {{.name = u"Id", .type = kLong, .autoNumber = true},
                      {.name = u"Name", .length = 60},
                      {.name = u"Note", .type = kMemo},
                      {.name = u"Where", .type = kDouble},
                      {.name = u"Flag", .type = kBoolean},
                      {.name = u"Small", .type = kByte},
                      {.name = u"Plain", .length = 20, .compressed = false},
                      {.name = u"Blob", .type = kOle}};
    wanted.indexes = {{.name = u"PrimaryKey", .columns = {u"Id"}, .primary = true},
                      {.name = u"ByName", .columns = {u"Name", u"Flag"}},
                      {.name = u"ByPlace", .columns = {u"Where"}, .ignoreNulls = true, .descending = true},
                      {.name = u"Together", .columns = {u"Plain", u"Small", u"Id"}, .unique = true}};
    return wanted;
}

using Model = std::map<std::int32_t, std::vector<Value>>;

Value RandomText(std::mt19937& random, std::size_t most) {
    static const std::u16string kLetters = u"ABCDEFGHIJ abc'-0123456789\u00E9\u00FF\u0107";
    std::u16string text;
    for (std::size_t n = random() % (most + 1); n > 0; --n) text += kLetters[random() % kLetters.size()];
    return text;
}

std::vector<Value> RandomRow(std::mt19937& random) {
    const std::size_t memoSizes[] = {0, 5, 60, 300, 2100, 5000, 20000};
    std::vector<Value> row(8);
    if (random() % 8 != 0) row[1] = RandomText(random, 60);
    if (random() % 4 != 0) row[2] = RandomText(random, memoSizes[random() % 7]);
    if (random() % 4 != 0) row[3] = static_cast<double>(static_cast<std::int32_t>(random() % 2000) - 1000) / 7;
    row[4] = random() % 2 == 0;
    row[5] = static_cast<std::int32_t>(random() % 256);
    if (random() % 3 != 0) row[6] = RandomText(random, 20);
    if (random() % 3 == 0) row[7] = Bytes(random() % 6000, static_cast<Byte>(random()));
    return row;
}

void ExpectSame(Database& db, const Model& model) {
    EXPECT_EQ(ErrorsOf(CheckIntegrity(db)), "");
    const Table table = db.OpenTable(u"Mixed");
    Cursor cursor = table.Rows();
    std::size_t count = 0;
    while (cursor.Next()) {
        const std::vector<Value> row = Values(cursor.Current(), table.definition());
        const auto found = model.find(std::get<std::int32_t>(row[0]));
        ASSERT_NE(found, model.end());
        std::vector<Value> expected = found->second;
        expected[0] = row[0];
        EXPECT_EQ(row, expected);
        ++count;
    }
    EXPECT_EQ(count, model.size());
}

TEST(WriteTest, RandomChangesKeepTheFileSoundAndEqualToAModel) {
    MemoryStorage storage;
    Database db = Database::Create("db", kPassword, InMemory(storage));
    Table table = db.CreateTable(MixedSpec());
    std::mt19937 random(20260131);
    Model model;
    std::map<std::int32_t, RowId> places;
    for (int round = 0; round < 40; ++round) {
        // Some rounds mostly add, some mostly delete, so that trees grow and are emptied again.
        const unsigned deleteShare = round % 10 < 6 ? 1 : 7;
        const int together = round % 3 == 0 ? 1 : 25;
        for (int step = 0; step < 60; ++step) {
            if (step % together == 0) {
                if (step > 0) db.Commit();
                db.Begin();
            }
            const auto action = random() % 10;
            if (model.empty() || action >= deleteShare + 2) {
                const std::vector<Value> row = RandomRow(random);
                std::vector<Assignment> values;
                for (std::size_t i = 1; i < row.size(); ++i) values.push_back({i, row[i]});
                const RowId id = table.Insert(values);
                const std::int32_t number = std::get<std::int32_t>(table.Fetch(id).Get(0));
                model[number] = row;
                places[number] = id;
                continue;
            }
            auto at = places.lower_bound(static_cast<std::int32_t>(random() % 2000));
            if (at == places.end()) at = places.begin();
            if (action < deleteShare) {
                table.Delete(at->second);
                model.erase(at->first);
                places.erase(at);
            } else {
                const std::vector<Value> row = RandomRow(random);
                std::vector<Assignment> values;
                for (std::size_t i = 1; i < row.size(); ++i) {
                    if (random() % 2 == 0) continue;
                    values.push_back({i, row[i]});
                    model[at->first][i] = row[i];
                }
                table.Update(at->second, values);
            }
        }
        db.Commit();
        ExpectSame(db, model);
    }
    db.Close();
    Database again = OpenMemory(storage);
    ExpectSame(again, model);
}

TEST(WriteTest, TreesOfSeveralLevelsGrowAndAreEmptied) {
    MemoryStorage storage;
    Database db = Database::Create("db", kPassword, InMemory(storage));
    TableSpec wanted{
        u"Words", {{.name = u"Word", .length = 255}}, {{.name = u"Word", .columns = {u"Word"}, .unique = true}}};
    Table table = db.CreateTable(wanted);
    db.Begin();
    std::mt19937 random(7);
    std::map<std::u16string, RowId> model;
    // Long keys make pages of a few entries, and so deep trees from few rows.
    while (model.size() < 1500) {
        std::u16string word(100 + random() % 155, static_cast<char16_t>(u'A' + random() % 3));
        word += Wide(std::to_string(random()));
        word = word.substr(word.size() > 255 ? word.size() - 255 : 0);
        if (!model.contains(word)) model[word] = table.Insert({{Assignment{0, word}}});
    }
    EXPECT_EQ(ErrorsOf(CheckIntegrity(db)), "");
    for (const auto& [word, id] : model) EXPECT_EQ(table.FindFirst(u"Word='" + word + u"'"), id);
    std::size_t step = 0;
    while (!model.empty()) {
        auto at = model.begin();
        std::advance(at, static_cast<std::ptrdiff_t>(random() % std::min<std::size_t>(model.size(), 40)));
        table.Delete(at->second);
        model.erase(at);
        if (++step % 250 != 0) continue;
        EXPECT_EQ(ErrorsOf(CheckIntegrity(db)), "") << step;
    }
    EXPECT_EQ(ErrorsOf(CheckIntegrity(db)), "");
    EXPECT_EQ(table.CountRows(), 0U);
}

TEST(WriteTest, SampleFilesAreSoundAndStaySoundWhenChanged) {
    for (const char* name : {"PAF_FULL.dat", "PAF_THOURGHFARE.dat", "PAF_POSTZON.dat"}) {
        MemoryStorage storage;
        storage.Put("db", ReadBytes(Sample(name)));
        Database db = OpenMemory(storage, true);
        EXPECT_EQ(ErrorsOf(CheckIntegrity(db)), "") << name;
        Table table = db.OpenTable(db.TableNames()[0]);
        Cursor cursor = table.Rows();
        std::vector<RowId> ids;
        while (cursor.Next()) ids.push_back(cursor.Current().id());
        for (std::size_t i = 0; i < ids.size(); i += 2) {
            const bool memo = table.definition().columns[1].IsLong();
            table.Update(ids[i], {{Assignment{1, std::u16string(memo ? (i * 37) % 9000 : 8, u'X')}}});
            if (i % 3 == 0) table.Insert({{Assignment{0, u"ZZ" + Wide(std::to_string(i))}}});
            if (i % 7 == 0) table.Delete(ids[i + 1]);
        }
        EXPECT_EQ(ErrorsOf(CheckIntegrity(db)), "") << name;
    }
}

TEST(WriteTest, RefusedChangesLeaveNoTrace) {
    MemoryStorage storage;
    Database db = Database::Create("db", kPassword, InMemory(storage));
    Table table = db.CreateTable(AddressSpec());
    const RowId first = table.Insert({{Assignment{0, u"CR2 9AA"}, Assignment{1, u"one"}}});
    const RowId second = table.Insert({{Assignment{0, u"CR2 9AB"}}});
    const Bytes before = storage.Get("db");
    const auto code = [&](std::vector<Assignment> values) { return CodeOf([&] { table.Insert(values); }); };
    EXPECT_EQ(code({{0, u"cr2 9aa "}}), ErrorCode::kDuplicateKey);
    EXPECT_EQ(code({{1, u"no key"}}), ErrorCode::kNullKey);
    EXPECT_EQ(code({{0, u"12345678901"}}), ErrorCode::kValueTooLong);
    EXPECT_EQ(code({{0, u"A"}, {2, 5}}), ErrorCode::kTypeMismatch);
    EXPECT_EQ(code({{0, u"\u3042"}, {1, std::u16string(9000, u'x')}}), ErrorCode::kUnsupported);
    EXPECT_EQ(code({{7, u"A"}}), ErrorCode::kNoSuchColumn);
    EXPECT_EQ(CodeOf([&] { table.Update(second, {{Assignment{0, u"CR2 9AA"}}}); }), ErrorCode::kDuplicateKey);
    EXPECT_EQ(CodeOf([&] { db.CreateTable(AddressSpec()); }), ErrorCode::kTableExists);
    TableSpec bad = AddressSpec();
    bad.name = u"a.b";
    EXPECT_EQ(CodeOf([&] { db.CreateTable(bad); }), ErrorCode::kUsage);
    EXPECT_EQ(storage.Get("db"), before);
    table.Update(first, {{Assignment{0, u"cr2 9aa"}}}); // its own key in another case is no duplicate
    EXPECT_EQ(Show(table.Fetch(first).Get(0)), "cr2 9aa");
    table.Delete(second);
    EXPECT_EQ(CodeOf([&] { table.Fetch(second); }), ErrorCode::kUsage);
    db.Close();
    EXPECT_EQ(CodeOf([&] { table.Insert({}); }), ErrorCode::kUsage);
    Database reader = OpenMemory(storage);
    EXPECT_EQ(CodeOf([&] {
                  reader.OpenTable(u"PAF_FULLAddress").Insert({{Assignment{0, u"A"}}});
              }),
              ErrorCode::kReadOnly);
}

TEST(WriteTest, AnIndexThatIsDamagedLeavesTheOthersAsTheyWere) {
    MemoryStorage storage;
    PageNo root = 0;
    {
        Database db = Database::Create("db", kPassword, InMemory(storage));
        Table table = db.CreateTable({u"T",
                                      {{.name = u"A", .length = 10}, {.name = u"B", .length = 10}},
                                      {{.name = u"A", .columns = {u"A"}}, {.name = u"B", .columns = {u"B"}}}});
        for (const char16_t* key : {u"a", u"c", u"e"}) table.Insert({{Assignment{0, key}, Assignment{1, key}}});
        root = table.definition().indexes[1].root;
    }
    Bytes bytes = storage.Get("db");
    bytes[root * kPageSize] = kDataPage;
    storage.Put("db", bytes);
    Database db = OpenMemory(storage, true);
    Table table = db.OpenTable(u"T");
    EXPECT_EQ(CodeOf([&] { table.Insert({{Assignment{0, u"b"}, Assignment{1, u"b"}}}); }), ErrorCode::kCorrupt);
    EXPECT_FALSE(table.FindFirst(u"A='b'"));
    for (const char16_t* key : {u"a", u"c", u"e"}) EXPECT_TRUE(table.FindFirst(Equals(u"A", key)));
    EXPECT_EQ(table.CountRows(), 3U);
    db.Close();
    EXPECT_EQ(storage.Get("db"), bytes);
}

TEST(WriteTest, FilesGrowPastTheInlineMaps) {
    MemoryStorage storage;
    Database db = Database::Create("db", kPassword, InMemory(storage));
    db.Begin();
    Table table = db.CreateTable(AddressSpec());
    const std::u16string memo(4000, u'\u0107');
    for (int i = 0; i < 600; ++i) {
        table.Insert({{Assignment{0, Wide(std::to_string(100000 + i))}, Assignment{1, memo}}});
    }
    db.Commit();
    EXPECT_GT(storage.Get("db").size(), 1100U * kPageSize);
    EXPECT_EQ(ErrorsOf(CheckIntegrity(db)), "");
    const std::size_t size = storage.Get("db").size();
    // Freed pages are used again: rewriting everything once more must not make the file grow by as much again.
    Cursor cursor = table.Rows();
    while (cursor.Next()) table.Update(cursor.Current().id(), {{Assignment{1, memo}}});
    db.Close();
    EXPECT_LT(storage.Get("db").size(), size + size / 4);
    Database again = OpenMemory(storage);
    EXPECT_EQ(ErrorsOf(CheckIntegrity(again)), "");
    std::size_t faults = 0;
    for (const jet::Fault& fault : CheckIntegrity(again)) {
        ++faults;
        EXPECT_TRUE(false) << fault.what;
    }
    EXPECT_EQ(faults, 0U);
}

} // namespace
} // namespace jet
