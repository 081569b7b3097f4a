#include "testing/table_files.h"

#include "database/jet/jet_translation.h"
#include "jet/database.h"
#include "support/files.h"

namespace quorvex::testing {

void WriteJetFile(const std::wstring& path, const FileData& data) {
    std::filesystem::remove(support::ToPath(path));
    jet::Database database = jet::Database::Create(support::ToPath(path), database::ToUtf16(data.password));
    database.Begin();
    for (const auto& [name, contents] : data.tables) {
        const jet::IndexSpec byKey{.name = u"Key", .columns = {contents.columns.front().name}};
        jet::Table table = database.CreateTable({database::ToUtf16(name), contents.columns, {byKey}});
        for (const auto& row : contents.rows) {
            std::vector<jet::Assignment> values;
            for (std::size_t i = 0; i < row.size(); ++i) values.push_back({i, database::ToJet(row[i])});
            table.Insert(values);
        }
    }
    database.Close();
}

std::vector<std::vector<database::Value>> ReadJetRows(const std::wstring& path, const std::wstring& table) {
    jet::Database database = jet::Database::Open(support::ToPath(path), u"lanternfox");
    std::vector<std::vector<database::Value>> rows;
    const jet::Table opened = database.OpenTable(database::ToUtf16(table));
    for (jet::Cursor cursor = opened.Rows(); cursor.Next();) {
        auto& row = rows.emplace_back();
        for (std::size_t i = 0; i < opened.columnCount(); ++i) {
            row.push_back(database::FromJet(cursor.Current().Get(i)));
        }
    }
    return rows;
}

} // namespace quorvex::testing
