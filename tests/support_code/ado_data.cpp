#include "support_code/ado_data.h"

#include "support/text.h"
#include "support_code/tsv.h"

#include <regex>

namespace quorvex::testing {
namespace {

using localdata::Value;
using support::ParseNumber;
using support::UpperCase;

constexpr long kSyntaxError = -2147217900;
constexpr long kNoSuchTable = -2147217865;
constexpr long kNoSuchParameter = -2147217904;
constexpr long kWrongArguments = 3001;
constexpr long kNoSuchItem = 3265;

std::optional<double> NumberIn(const Value& value) {
    if (const auto* const whole = std::get_if<std::int32_t>(&value)) return *whole;
    if (const auto* const number = std::get_if<double>(&value)) return *number;
    return std::nullopt;
}

AdoTable& TableNamed(AdoFile& file, const std::wstring& name) {
    const auto found = file.tables.find(UpperCase(name));
    if (found != file.tables.end()) return found->second;
    throw AdoRefusal{kNoSuchTable, L"The Microsoft Jet database engine cannot find the input table or query '" + name +
                                       L"'.  Make sure it exists and that its name is spelled correctly."};
}

std::size_t QueryColumn(const AdoTable& table, const std::wstring& name) {
    if (const auto column = table.ColumnAt(name)) return *column;
    throw AdoRefusal{kNoSuchParameter, L"No value given for one or more required parameters."};
}

const std::wregex& Form(const wchar_t* text) {
    static std::map<std::wstring, std::wregex> forms;
    const auto known = forms.find(text);
    if (known != forms.end()) return known->second;
    return forms.emplace(text, std::wregex(text, std::regex::icase)).first->second;
}

constexpr wchar_t kWholeTable[] = L"select \\* from \\[?(\\w+)\\]?;?";
constexpr wchar_t kByText[] = L"select \\* from \\[(\\w+)\\] +where (?:\\(\\[?(\\w+)\\]?='([^']*)'\\)|"
                              L"\\[?(\\w+)\\]?='([^']*)');";
constexpr wchar_t kByNumber[] = L"select \\* from \\[(\\w+)\\] +where \\[(\\w+)\\]=([0-9]+);";
constexpr wchar_t kBox[] = L"select (\\w+)\\.\\* from (\\w+) where \\(\\(\\((\\w+)\\)>(-?[0-9.e+-]+)\\) and "
                           L"\\(\\((\\w+)\\)<(-?[0-9.e+-]+)\\) and \\(\\((\\w+)\\)>(-?[0-9.e+-]+)\\) and "
                           L"\\(\\((\\w+)\\)<(-?[0-9.e+-]+)\\)\\);";

bool InsideBox(const AdoTable& table, const AdoRow& row, const std::wsmatch& match) {
    for (std::size_t bound = 0; bound < 4; ++bound) {
        const auto value = NumberIn(row[QueryColumn(table, match[3 + 2 * bound])]);
        const double limit = ParseNumber(match[4 + 2 * bound].str());
        if (!value || !(bound % 2 == 0 ? *value > limit : *value < limit)) return false;
    }
    return true;
}

template <typename Wanted>
AdoSelection RowsOf(AdoTable& table, const Wanted& wanted) {
    AdoSelection selection{&table, {}};
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
        if (wanted(table.rows[i])) selection.rows.push_back(i);
    }
    return selection;
}

// --- Sample ----------------------------------------------------------------------------------------------------------

std::wstring Scrambled(const std::wstring& plain) {
    static const auto partners = [] {
        std::map<wchar_t, wchar_t> table;
        const std::string bytes = support::ReadFileBytes(DataFolder(L"sample") + L"\\PAF_SUBSTITUTION.txt");
        std::wstring lines = support::FromUtf8(bytes);
        while (!lines.empty()) {
            const std::wstring line = support::NextField(lines, L"\n", true);
            table[line.at(0)] = line.at(1);
        }
        return table;
    }();
    std::wstring text = UpperCase(plain);
    for (wchar_t& c : text) {
        const auto partner = partners.find(c);
        if (partner != partners.end()) c = partner->second;
    }
    return text;
}

void AddVersion(AdoFile& file, const std::wstring& date) {
    AdoTable& version = file.Add(L"Version", {{L"ID", ColumnType::Long}, {L"Text", ColumnType::Text}});
    version.rows = {{1, L"Format 2"}, {2, date}};
}

AdoFile AddressFile(const std::wstring& table, const std::wstring& truth, const std::wstring& date) {
    AdoFile file;
    const auto text = ColumnType::Text;
    AdoTable& addresses = file.Add(table, {{L"FT_Postcode", text}, {L"FT_Address", text}, {L"FT_Update", text}});
    for (const TsvRow& row : ReadTsv(DataFolder(L"sample\\truth\\" + truth))) {
        const Value packed = row.at(2) == L"\\N" ? Value() : Value(Scrambled(row.at(2)));
        addresses.rows.push_back({row.at(0), packed, row.at(1)});
    }
    AddVersion(file, date);
    return file;
}

AdoFile PostZonFile() {
    static const std::vector<std::wstring> kColumns = {L"PZ_Postcode",    L"PZ_IntroductionDate",
                                                       L"PZ_GridRefEast", L"PZ_GridRefNorth",
                                                       L"PZ_County",      L"PZ_District",
                                                       L"PZ_Ward",        L"PZ_UserType",
                                                       L"PZ_GridStatus",  L"PZ_Country",
                                                       L"PZ_WardStatus",  L"PZ_NHS_Code",
                                                       L"PZ_NHS_Region",  L"PZ_Lat",
                                                       L"PZ_Long",        L"PZ_OSRef",
                                                       L"PZ_Update"};
    AdoFile file;
    std::vector<AdoColumn> columns;
    for (const std::wstring& name : kColumns) {
        const bool degrees = name == L"PZ_Lat" || name == L"PZ_Long";
        columns.push_back({name, degrees ? ColumnType::Double : ColumnType::Text});
    }
    AdoTable& postZon = file.Add(L"PAF_PostZon", columns);
    for (const TsvRow& row : ReadTsv(DataFolder(L"sample\\truth\\postzon.tsv"))) {
        AdoRow values;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const std::wstring& text = row.at(i);
            if (text.empty()) {
                values.emplace_back();
            } else if (columns[i].type == ColumnType::Double) {
                values.emplace_back(ParseNumber(text));
            } else {
                values.emplace_back(text);
            }
        }
        postZon.rows.push_back(std::move(values));
    }
    AddVersion(file, L"20260115");
    return file;
}

} // namespace

std::optional<std::size_t> AdoTable::ColumnAt(const std::wstring& name) const {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (UpperCase(columns[i].name) == UpperCase(name)) return i;
    }
    return std::nullopt;
}

AdoTable& AdoFile::Add(const std::wstring& name, std::vector<AdoColumn> columns) {
    return tables[UpperCase(name)] = AdoTable{std::move(columns), {}};
}

AdoFiles SampleFiles() {
    const auto path = [](const wchar_t* name) { return UpperCase(DataFolder(L"sample") + L"\\" + name); };
    AdoFiles files;
    files[path(L"PAF_FULL.dat")] = AddressFile(L"PAF_FULLAddress", L"rows_full.tsv", L"20260131");
    files[path(L"PAF_THOURGHFARE.dat")] = AddressFile(L"PAF_StreetAddress", L"rows_street.tsv", L"20251231");
    files[path(L"PAF_POSTZON.dat")] = PostZonFile();
    return files;
}

AdoSelection Select(AdoFile& file, const std::wstring& query) {
    std::wsmatch match;
    if (std::regex_match(query, match, Form(kWholeTable))) {
        return RowsOf(TableNamed(file, match[1]), [](const AdoRow&) { return true; });
    }
    if (std::regex_match(query, match, Form(kByText))) {
        AdoTable& table = TableNamed(file, match[1]);
        const std::size_t form = match[2].matched ? 2 : 4;
        const AdoCriterion criterion{QueryColumn(table, match[form]), match[form + 1].str(), 0};
        return RowsOf(table, [&](const AdoRow& row) { return criterion.Matches(row); });
    }
    if (std::regex_match(query, match, Form(kByNumber))) {
        AdoTable& table = TableNamed(file, match[1]);
        const AdoCriterion criterion{QueryColumn(table, match[2]), std::nullopt, ParseNumber(match[3].str())};
        return RowsOf(table, [&](const AdoRow& row) { return criterion.Matches(row); });
    }
    if (std::regex_match(query, match, Form(kBox)) && UpperCase(match[1].str()) == UpperCase(match[2].str())) {
        AdoTable& table = TableNamed(file, match[2]);
        return RowsOf(table, [&](const AdoRow& row) { return InsideBox(table, row, match); });
    }
    throw AdoRefusal{kSyntaxError, L"Syntax error (missing operator) in query expression '" + query + L"'."};
}

bool AdoCriterion::Matches(const AdoRow& row) const {
    if (text) {
        const auto* const held = std::get_if<std::wstring>(&row[column]);
        return held != nullptr && UpperCase(*held) == UpperCase(*text);
    }
    return NumberIn(row[column]) == number;
}

AdoCriterion ParseCriterion(const AdoTable& table, const std::wstring& criterion) {
    std::wsmatch match;
    if (!std::regex_match(criterion, match, Form(L"\\[?(\\w+)\\]? *= *(?:'([^']*)'|(-?[0-9.]+))"))) {
        throw AdoRefusal{kWrongArguments, L"Arguments are of the wrong type, are out of acceptable range, or are in "
                                          L"conflict with one another."};
    }
    const auto column = table.ColumnAt(match[1]);
    if (!column) {
        throw AdoRefusal{kNoSuchItem, L"Item cannot be found in the collection corresponding to the requested name or "
                                      L"ordinal."};
    }
    if (match[2].matched) return {*column, match[2].str(), 0};
    return {*column, std::nullopt, ParseNumber(match[3].str())};
}

} // namespace quorvex::testing
