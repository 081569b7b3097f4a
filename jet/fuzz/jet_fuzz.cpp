// Opens any bytes as a database and reads everything that can be reached: an error is fine, anything else is a fault.

#include "jet/check.h"
#include "jet/memory_storage.h"

#include <cstddef>
#include <cstdint>

namespace {

template <typename Action>
void Try(const Action& action) {
    try {
        action();
    } catch (const jet::Error&) {
        return; // a damaged file is refused
    }
}

void ReadTable(jet::Database& database, const std::u16string& name) {
    const jet::Table table = database.OpenTable(name);
    jet::Cursor cursor = table.Rows();
    while (cursor.Next()) {
        for (std::size_t i = 0; i < table.columnCount(); ++i) {
            Try([&] { cursor.Current().Get(i); });
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMost = 600000;
    if (size > kMost) return 0;
    jet::MemoryStorage storage;
    storage.Put("db", jet::Bytes(data, data + size));
    jet::OpenOptions options;
    options.storage = &storage;
    Try([&] {
        jet::Database database = jet::Database::Open("db", u"lanternfox", options);
        std::vector<std::u16string> names;
        Try([&] { names = database.TableNames(); });
        for (const std::u16string& name : names) Try([&] { ReadTable(database, name); });
        for (const char16_t* query :
             {u"SELECT * From [PAF_FULLAddress] WHERE [FT_Postcode]='CR2 9AA';",
              u"SELECT * FROM [PAF_PostZon]  WHERE (PZ_OSRef='NJ91941009');",
              u"SELECT PAF_PostZon.* FROM PAF_PostZon WHERE (((PZ_Long)>-3) and ((PZ_Long)<0) and ((PZ_Lat)>51) and "
              u"((PZ_Lat)<55));"}) {
            Try([&] {
                jet::Cursor cursor = database.Select(query);
                while (cursor.Next()) cursor.Current().Get(0);
            });
        }
        jet::CheckIntegrity(database);
    });
    return 0;
}
