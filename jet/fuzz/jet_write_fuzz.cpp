// Random changes against a model: after each batch the file must be sound and hold what the model holds.

#include "jet/check.h"
#include "jet/memory_storage.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace {

// The fuzzer's bytes as decisions; zeros when they are used up.
class Decisions {
  public:
    Decisions(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
    bool AtEnd() const { return at_ >= size_; }
    unsigned Byte() { return at_ < size_ ? data_[at_++] : 0U; }
    unsigned Word() {
        const unsigned high = Byte() << 8;
        return high | Byte();
    }

  private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

struct Record {
    std::u16string memo;
    double place = 0;
};

[[noreturn]] void Fail(const std::string& what) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::abort();
}

std::u16string KeyOf(unsigned number) {
    std::u16string key(number % 180, static_cast<char16_t>(u'A' + number % 3));
    for (const char c : std::to_string(number)) key += static_cast<char16_t>(c);
    return key;
}

void Compare(const jet::Database& database, const jet::Table& table, const std::map<std::u16string, Record>& model) {
    const std::string faults = jet::ErrorsOf(jet::CheckIntegrity(database));
    if (!faults.empty()) Fail(faults);
    if (table.CountRows() != model.size()) Fail("a row too many or too few");
    jet::Cursor cursor = table.Rows();
    while (cursor.Next()) {
        const auto found = model.find(std::get<std::u16string>(cursor.Current().Get(0)));
        if (found == model.end() || cursor.Current().Get(1) != jet::Value(found->second.memo) ||
            cursor.Current().Get(2) != jet::Value(found->second.place)) {
            Fail("a row differs from the model");
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMost = 4096;
    if (size > kMost) return 0;
    Decisions decide(data, size);
    jet::MemoryStorage storage;
    jet::OpenOptions options;
    options.storage = &storage;
    jet::Database database = jet::Database::Create("db", u"", options);
    jet::Table table = database.CreateTable({u"T",
                                             {{.name = u"K", .length = 200},
                                              {.name = u"M", .type = jet::ColumnType::kMemo},
                                              {.name = u"P", .type = jet::ColumnType::kDouble}},
                                             {{.name = u"K", .columns = {u"K"}, .primary = true},
                                              {.name = u"P", .columns = {u"P", u"K"}, .descending = true}}});
    const int together = 1 + decide.Byte() % 20;
    database.Begin();
    std::map<std::u16string, Record> model;
    for (int step = 1; !decide.AtEnd(); ++step) {
        const unsigned action = decide.Byte();
        const std::u16string key = KeyOf(decide.Word() % 300);
        const Record record{std::u16string(decide.Word() % 9000, u'm'), static_cast<double>(decide.Byte()) - 100};
        const std::vector<jet::Assignment> values = {{0, key}, {1, record.memo}, {2, record.place}};
        std::u16string criterion = u"K='";
        const auto found = table.FindFirst(criterion.append(key).append(u"'"));
        if (found.has_value() != model.contains(key)) Fail("a look-up differs from the model");
        if (found && action % 3 == 0) {
            table.Delete(*found);
            model.erase(key);
        } else if (found) {
            table.Update(*found, values);
            model[key] = record;
        } else {
            table.Insert(values);
            model[key] = record;
        }
        if (step % together == 0) {
            database.Commit();
            database.Begin();
        }
        if (step % 25 == 0) Compare(database, table, model);
    }
    Compare(database, table, model);
    database.Close();
    jet::Database again = jet::Database::Open("db", u"", options);
    Compare(again, again.OpenTable(u"T"), model);
    return 0;
}
