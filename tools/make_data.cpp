// Makes a data folder of invented postcodes, or one update file for it, of any size from a seed.

#include "jet/database.h"
#include "jet/text.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr std::u16string_view kPassword = u"lanternfox";

struct Settings {
    std::filesystem::path folder;
    std::uint64_t seed = 1;
    int rows = 600;
    std::string date = "20260131";
    char updateKind = 0; // F, T or Z: make that update file only
};

// The same numbers on every platform and from every library (SplitMix64).
class Random {
  public:
    Random(std::uint64_t seed, std::uint64_t stream)
        : state_(seed * 0x9E3779B97F4A7C15U + stream * 0xD1B54A32D192ED03U) {}
    std::uint64_t Next() {
        std::uint64_t z = state_ += 0x9E3779B97F4A7C15U;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31);
    }
    int Below(int limit) { return static_cast<int>(Next() % static_cast<std::uint64_t>(limit)); }
    template <std::size_t N>
    const char* Pick(const std::array<const char*, N>& list) {
        return list[static_cast<std::size_t>(Below(static_cast<int>(N)))];
    }

  private:
    std::uint64_t state_;
};

struct Area {
    const char* code;
    const char* town;
    const char* county;
    const char* country;
    double latitude;
    double longitude;
};

constexpr std::array<Area, 10> kAreas = {{
    {"AB", "ABERDEEN", "ABERDEENSHIRE", "SCOTLAND", 57.15, -2.11},
    {"B", "BIRMINGHAM", "WEST MIDLANDS", "ENGLAND", 52.48, -1.90},
    {"BS", "BRISTOL", "AVON", "ENGLAND", 51.45, -2.59},
    {"CR", "CROYDON", "SURREY", "ENGLAND", 51.37, -0.10},
    {"DN", "DONCASTER", "SOUTH YORKSHIRE", "ENGLAND", 53.52, -1.13},
    {"EH", "EDINBURGH", "MIDLOTHIAN", "SCOTLAND", 55.95, -3.19},
    {"L", "LIVERPOOL", "MERSEYSIDE", "ENGLAND", 53.41, -2.98},
    {"LL", "LLANDUDNO", "GWYNEDD", "WALES", 53.32, -3.83},
    {"M", "MANCHESTER", "GREATER MANCHESTER", "ENGLAND", 53.48, -2.24},
    {"PE", "PETERBOROUGH", "CAMBRIDGESHIRE", "ENGLAND", 52.57, -0.24},
}};
constexpr std::array<const char*, 12> kStreetNames = {"KILN",    "FEN",   "MILL",    "QUARRY", "CLOVER",  "CHAPEL",
                                                      "ORCHARD", "HERON", "ABBOT'S", "WILLOW", "STATION", "MARKET"};
constexpr std::array<const char*, 8> kStreetKinds = {"ROAD", "STREET", "LANE", "CLOSE",
                                                     "HILL", "AVENUE", "ROW",  "COURT"};
constexpr std::array<const char*, 8> kLocalities = {"",           "",         "",       "UPWICK",
                                                    "NORTH WICK", "TYDWORTH", "OUTHAM", "LEVERWORTH"};
constexpr std::array<const char*, 6> kHouses = {"THE GABLES",  "CLOVER BARN", "ROSE COTTAGE",
                                                "CROSS VILLA", "MILL HOUSE",  "HILL VIEW"};
constexpr std::array<const char*, 6> kFirms = {"ALDER CARPETS", "GORSE SURVEYORS", "GLEBE GARAGE",
                                               "HARE & SONS",   "FERN BAKERY",     "DALE TOOLS"};

struct Postcode {
    std::string written; // one blank before the last three characters
    std::string key;     // as the tables hold it
    const Area* area;
};

Postcode PostcodeOf(int number) {
    constexpr std::string_view kLetters = "ABDEFGHJLNPQRSTUWXYZ";
    const Area& area = kAreas[static_cast<std::size_t>(number) % kAreas.size()];
    // A stride without common factor spreads neighbours over sectors and units.
    const std::size_t unit = (static_cast<std::size_t>(number) / kAreas.size()) * 1237 % 396000;
    const std::string outward = area.code + std::to_string(1 + unit / 4000);
    std::string inward = std::to_string(unit / 400 % 10);
    inward += kLetters[unit / 20 % 20];
    inward += kLetters[unit % 20];
    Postcode postcode{outward, outward, &area};
    postcode.written.append(1, ' ').append(inward);
    const std::size_t blanks = outward.size() >= 4 ? 0 : outward.size() == 3 ? 1 : 2;
    postcode.key.append(blanks, ' ').append(inward);
    return postcode;
}

// The scrambling of the packed address: pairs of characters that stand for one another.
class Scrambler {
  public:
    explicit Scrambler(std::uint64_t seed) {
        std::string letters = " !&'(),-./{|}ABCDEFGHIJKLMNOPQRSTUVWXYZ";
        Random random(seed, 0);
        for (std::size_t i = letters.size() - 1; i > 0; --i) {
            std::swap(letters[i], letters[static_cast<std::size_t>(random.Below(static_cast<int>(i) + 1))]);
        }
        for (std::size_t i = 0; i + 1 < letters.size(); i += 2) {
            partner_[letters[i]] = letters[i + 1];
            partner_[letters[i + 1]] = letters[i];
        }
        partner_[letters.back()] = letters.back(); // one stays alone
    }
    std::u16string Scramble(const std::string& plain) const {
        std::u16string stored;
        for (const char c : plain) {
            const auto found = partner_.find(c);
            stored += static_cast<char16_t>(found == partner_.end() ? c : found->second);
        }
        return stored;
    }
    std::string File() const {
        std::string text;
        for (const auto& [stored, plain] : partner_) {
            text += stored;
            text += plain;
            text += '\n';
        }
        return text;
    }

  private:
    std::map<char, char> partner_;
};

std::u16string Wide(std::string_view text) {
    return std::u16string(text.begin(), text.end());
}

std::string Join(const std::vector<std::string>& fields) {
    std::string text;
    for (const std::string& field : fields) text.append(text.empty() && &field == &fields[0] ? "" : "|").append(field);
    return text;
}

std::string StreetOf(Random& random) {
    return std::string(random.Pick(kStreetNames)).append(" ").append(random.Pick(kStreetKinds));
}

std::string Premises(Random& random) {
    std::string text = "{";
    const int count = random.Below(50) == 0 ? 60 + random.Below(120) : 1 + random.Below(14);
    int number = 1 + random.Below(40);
    for (int i = 0; i < count; ++i, number += 1 + random.Below(2)) {
        const int shape = random.Below(10);
        if (shape == 0) text.append(random.Pick(kFirms)).append(" LTD");
        text += '|';
        text.append(shape == 1 ? random.Pick(kHouses) : std::to_string(number)).append("!");
    }
    return text += '}';
}

std::string FullAddress(Random& random, const Postcode& postcode) {
    const Area& area = *postcode.area;
    const std::string street = StreetOf(random);
    const std::string premises = Premises(random);
    return premises + Join({street, random.Pick(kLocalities), area.town, area.county, postcode.written,
                            "U" + std::to_string(1 + random.Below(9)), area.country,
                            std::to_string(1 + random.Below(9)) + static_cast<char>('A' + random.Below(20)),
                            std::to_string(1 + random.Below(40)), random.Below(5) == 0 ? "Y" : "N",
                            std::to_string(10000 + random.Below(60000)), "S" + std::to_string(random.Below(100))});
}

std::string StreetAddress(Random& random, const Postcode& postcode) {
    const Area& area = *postcode.area;
    return Join({StreetOf(random), random.Pick(kLocalities), "", area.town, area.county, postcode.written, area.country,
                 "U" + std::to_string(1 + random.Below(9)), std::to_string(10000 + random.Below(60000))});
}

std::string Digits(int value, std::size_t width) {
    std::string text = std::to_string(value);
    return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

// A value for every column of PAF_PostZon, in the order of its columns.
std::vector<jet::Value> PostZonRow(Random& random, const Postcode& postcode, const std::string& date) {
    const Area& area = *postcode.area;
    const double latitude = area.latitude + (random.Below(200001) - 100000) / 1e6 * 1.5;
    const double longitude = area.longitude + (random.Below(200001) - 100000) / 1e6 * 2.5;
    const int east = static_cast<int>(400000 + (longitude + 2) * 66000);
    const int north = static_cast<int>(-100000 + (latitude - 49) * 111200);
    const char country = area.country[0];
    const auto code = [&](const char* kind, int most) {
        return Wide(std::string(1, country) + kind + Digits(random.Below(most), 6));
    };
    const std::string introduced = std::to_string(1973 + random.Below(50)) + Digits(1 + random.Below(12), 2) + "01";
    const std::string reference = "SK" + Digits(east % 100000 / 10, 4) + Digits(north % 100000 / 10, 4);
    return {Wide(postcode.key),
            Wide(introduced),
            Wide(Digits(east, 6)),
            Wide(Digits(north, 7)),
            code("10", 99),
            code("07", 400),
            code("05", 9000),
            random.Below(8) == 0 ? u"L" : u"S",
            Wide(std::to_string(1 + random.Below(9))),
            code("92", 9),
            Wide(std::to_string(random.Below(3))),
            code("18", 60),
            code("19", 20),
            latitude,
            longitude,
            Wide(reference),
            Wide(date)};
}

jet::TableSpec AddressTable(const char16_t* name) {
    using enum jet::ColumnType;
    return {name,
            {{.name = u"FT_Postcode", .type = kText, .length = 10},
             {.name = u"FT_Address", .type = kMemo},
             {.name = u"FT_Update", .type = kText, .length = 8}},
            {{.name = u"PrimaryKey", .columns = {u"FT_Postcode"}, .primary = true}}};
}

jet::TableSpec PostZonTable() {
    using enum jet::ColumnType;
    jet::TableSpec wanted{u"PAF_PostZon", {}, {}};
    const std::array<std::pair<const char16_t*, std::uint16_t>, 13> texts = {{{u"PZ_Postcode", 10},
                                                                              {u"PZ_IntroductionDate", 8},
                                                                              {u"PZ_GridRefEast", 6},
                                                                              {u"PZ_GridRefNorth", 7},
                                                                              {u"PZ_County", 9},
                                                                              {u"PZ_District", 9},
                                                                              {u"PZ_Ward", 9},
                                                                              {u"PZ_UserType", 1},
                                                                              {u"PZ_GridStatus", 1},
                                                                              {u"PZ_Country", 9},
                                                                              {u"PZ_WardStatus", 1},
                                                                              {u"PZ_NHS_Code", 9},
                                                                              {u"PZ_NHS_Region", 9}}};
    for (const auto& [name, length] : texts) wanted.columns.push_back({.name = name, .length = length});
    wanted.columns.push_back({.name = u"PZ_Lat", .type = kDouble});
    wanted.columns.push_back({.name = u"PZ_Long", .type = kDouble});
    wanted.columns.push_back({.name = u"PZ_OSRef", .length = 12});
    wanted.columns.push_back({.name = u"PZ_Update", .length = 8});
    wanted.indexes = {{.name = u"PrimaryKey", .columns = {u"PZ_Postcode"}, .primary = true},
                      {.name = u"PZ_Lat", .columns = {u"PZ_Lat"}},
                      {.name = u"PZ_Long", .columns = {u"PZ_Long"}}};
    return wanted;
}

void AddVersion(jet::Database& database, const std::string& date) {
    jet::Table version = database.CreateTable({u"Version",
                                               {{.name = u"ID", .type = jet::ColumnType::kLong}, {.name = u"Text"}},
                                               {{.name = u"PrimaryKey", .columns = {u"ID"}, .primary = true}}});
    version.Insert({{jet::Assignment{0, 1}, jet::Assignment{1, u"Format 2"}}});
    version.Insert({{jet::Assignment{0, 2}, jet::Assignment{1, Wide(date)}}});
}

// The records of an update: every other one belongs to a postcode that the data folder has, the rest is new.
std::vector<int> RecordNumbers(const Settings& settings, int folderRows) {
    std::vector<int> numbers;
    for (int i = 0; i < settings.rows; ++i) {
        const bool known = settings.updateKind != 0 && i % 2 == 0 && folderRows > 0;
        const int fresh = settings.updateKind == 0 ? i : folderRows + i;
        numbers.push_back(known ? static_cast<int>(std::int64_t{i} * 7919 % folderRows) : fresh);
    }
    return numbers;
}

void MakeFile(const Settings& settings, char kind, const std::filesystem::path& path, int folderRows) {
    std::filesystem::remove(path);
    jet::Database database = jet::Database::Create(path, kPassword);
    database.Begin();
    const Scrambler scrambler(settings.seed);
    const char16_t* const name = kind == 'F' ? u"PAF_FULLAddress" : u"PAF_StreetAddress";
    jet::Table table = database.CreateTable(kind == 'Z' ? PostZonTable() : AddressTable(name));
    std::vector<jet::Assignment> row;
    for (const int number : RecordNumbers(settings, folderRows)) {
        const Postcode postcode = PostcodeOf(number);
        // An update's records differ from the folder's: other premises, the package's date.
        const std::uint64_t kindStream = static_cast<std::uint64_t>(kind) + (settings.updateKind != 0 ? 1000U : 0U);
        Random random(settings.seed + kindStream, static_cast<std::uint64_t>(number) + 1);
        row.clear();
        if (kind == 'Z') {
            for (jet::Value& value : PostZonRow(random, postcode, settings.date))
                row.push_back({row.size(), std::move(value)});
        } else {
            const std::string plain = kind == 'F' ? FullAddress(random, postcode) : StreetAddress(random, postcode);
            row = {{0, Wide(postcode.key)}, {1, scrambler.Scramble(plain)}, {2, Wide(settings.date)}};
        }
        table.Insert(row);
    }
    if (settings.updateKind == 0) AddVersion(database, settings.date);
    database.Close();
    std::printf("%s: %d records\n", path.string().c_str(), settings.rows);
}

int CountFolderRows(const std::filesystem::path& folder, char kind) {
    const char* const file = kind == 'F' ? "PAF_FULL.dat" : kind == 'T' ? "PAF_THOURGHFARE.dat" : "PAF_POSTZON.dat";
    const char16_t* const table = kind == 'F'   ? u"PAF_FULLAddress"
                                  : kind == 'T' ? u"PAF_StreetAddress"
                                                : u"PAF_PostZon";
    return static_cast<int>(jet::Database::Open(folder / file, kPassword).OpenTable(table).CountRows());
}

int Usage() {
    std::fputs("make-data FOLDER [--rows N] [--seed S] [--date YYYYMMDD]\n"
               "    makes PAF_FULL.dat, PAF_THOURGHFARE.dat, PAF_POSTZON.dat and PAF_SUBSTITUTION.txt\n"
               "make-data FOLDER --update F|T|Z --date YYYYMMDD [--rows N] [--seed S]\n"
               "    makes UPDATE_F_YYYYMMDD.dat for that folder, half of it for postcodes that it has;\n"
               "    the seed must be the folder's\n",
               stderr);
    return 2;
}

template <typename Number>
bool ReadNumber(const std::string& text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && !text.empty();
}

bool ReadSettings(const std::vector<std::string>& arguments, Settings& settings) {
    bool good = true;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& option = arguments[i];
        if (!option.starts_with("--")) {
            good = good && settings.folder.empty();
            settings.folder = option;
            continue;
        }
        if (++i == arguments.size()) return false;
        const std::string& value = arguments[i];
        if (option == "--rows") {
            good = good && ReadNumber(value, settings.rows) && settings.rows >= 0 && settings.rows <= 3000000;
        } else if (option == "--seed") {
            good = good && ReadNumber(value, settings.seed);
        } else if (option == "--date") {
            good = good && value.size() == 8;
            settings.date = value;
        } else if (option == "--update") {
            good = good && (value == "F" || value == "T" || value == "Z");
            settings.updateKind = value.empty() ? '\0' : value[0];
        } else {
            return false;
        }
    }
    return good && !settings.folder.empty();
}

void Run(const Settings& settings) {
    std::filesystem::create_directories(settings.folder);
    if (settings.updateKind != 0) {
        const std::string name = std::string("UPDATE_") + settings.updateKind + "_" + settings.date + ".dat";
        MakeFile(settings, settings.updateKind, settings.folder / name,
                 CountFolderRows(settings.folder, settings.updateKind));
        return;
    }
    MakeFile(settings, 'F', settings.folder / "PAF_FULL.dat", 0);
    MakeFile(settings, 'T', settings.folder / "PAF_THOURGHFARE.dat", 0);
    MakeFile(settings, 'Z', settings.folder / "PAF_POSTZON.dat", 0);
    std::ofstream substitution(settings.folder / "PAF_SUBSTITUTION.txt", std::ios::binary);
    substitution << Scrambler(settings.seed).File();
    if (!substitution.flush()) throw jet::Error(jet::ErrorCode::kIo, "The substitution file cannot be written");
}

} // namespace

int main(int argc, char** argv) {
    Settings settings;
    if (!ReadSettings(std::vector<std::string>(argv + 1, argv + argc), settings)) return Usage();
    try {
        Run(settings);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make-data: %s\n", error.what());
        return 1;
    }
}
