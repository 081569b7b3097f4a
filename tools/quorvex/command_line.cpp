#include "quorvex/command_line.h"

#include "object/quorvex.h"
#include "quorvex/environment.h"
#include "support/files.h"
#include "support/text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <thread>

namespace quorvex::cli {
namespace {

constexpr unsigned kMostThreads = 64;

// Texts as CLI11 reads them; made wide once all is parsed.
struct Texts {
    std::string data, service, key;
    std::vector<std::string> postcode; // in one argument or, unquoted, in two
    std::string house, id, lookupKey, from, to, at;
    std::string input, output, points, packages;
    std::string postcodeColumn, houseColumn, separator, encoding;
    std::string latitude = "latitude", longitude = "longitude";
    double within = 0;
    std::size_t most = 0;
    unsigned threads = 0;
    bool resume = false, overwrite = false, download = false;
};

std::wstring Joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts) text += (text.empty() ? "" : " ") + part;
    return support::FromUtf8(text);
}

std::wstring Wide(const std::string& text) {
    return support::FromUtf8(text);
}

std::filesystem::path PathOf(const std::string& text) {
#ifdef _WIN32
    return support::ToPath(Wide(text));
#else
    return text; // names of files are bytes here
#endif
}

char SeparatorOf(const std::string& text) {
    return text.empty() ? '\0' : text == "tab" || text == "\\t" ? '\t' : text.front();
}

// Builds the commands of the program around the texts and remembers which one was called.
class Grammar {
  public:
    Grammar(Texts& texts, CommandLine& line) : texts_(texts), line_(line) {
        app.description("Quorvex address lookup: addresses, places and lists from the command line.");
        app.footer("Exit codes: 0 found or done, 1 nothing found, 2 wrong call, 3 failed.\n"
                   "quorvex COMMAND --help tells more; docs/command-line.md shows each command.");
        app.require_subcommand(1);
        app.allow_windows_style_options(false); // "/folder/list.csv" is a path on Windows as well
        app.get_formatter()->column_width(30);
        app.set_version_flag("--version", "quorvex " + support::ToUtf8(object::GetVersion()));
        AddLookups();
        AddClean();
        AddNearest();
        AddDataCommands();
    }

    CLI::App app{"", "quorvex"};

  private:
    CLI::App& Add(const char* name, const char* description) {
        CLI::App& command = *app.add_subcommand(name, description);
        command.footer("Exit codes: 0 found or done, 1 nothing found, 2 wrong call, 3 failed.");
        command.add_flag("--json", line_.json, "Print JSON");
        return command;
    }
    void AddSource(CLI::App& command) {
        CLI::Option* const data = command.add_option("--data", texts_.data, "Folder of the data files");
        CLI::Option* const service = command.add_option("--service", texts_.service, "Address of the web service");
        data->excludes(service);
        data->option_text("FOLDER");
        service->option_text("URL");
        command.add_option("--key", texts_.key, "Data key for the service")->option_text("KEY");
    }
    void AddLookups();
    void AddClean();
    void AddNearest();
    void AddDataCommands();

    Texts& texts_;
    CommandLine& line_;
};

void Grammar::AddLookups() {
    CLI::App& find = Add("find", "List the addresses at a postcode");
    find.add_option("postcode", texts_.postcode, "Postcode")->required()->expected(1, 2)->option_text(" ");
    find.add_option("--house", texts_.house, "Only lines with this house number or name");
    AddSource(find);
    find.callback([this] { line_.command = FindCommand{Joined(texts_.postcode), Wide(texts_.house)}; });

    CLI::App& record = Add("record", "Show the whole record of an address");
    record.add_option("id", texts_.id, "Identifier, as find prints it")->required()->option_text(" ");
    AddSource(record);
    record.callback([this] { line_.command = RecordCommand{Wide(texts_.id)}; });

    CLI::App& street = Add("street", "Show the street of a postcode");
    street.add_option("postcode", texts_.postcode, "Postcode")->required()->expected(1, 2)->option_text(" ");
    AddSource(street);
    street.callback([this] { line_.command = StreetCommand{Joined(texts_.postcode)}; });

    CLI::App& postzon = Add("postzon", "Show place and districts of a postcode");
    postzon.add_option("key", texts_.lookupKey, "Postcode, grid reference or \"longitude|latitude\"")
        ->required()
        ->option_text(" ");
    AddSource(postzon);
    postzon.callback([this] { line_.command = PostZonCommand{Wide(texts_.lookupKey)}; });

    CLI::App& distance = Add("distance", "Distance between two postcodes");
    distance.add_option("from", texts_.from, "Postcode")->required()->option_text(" ");
    distance.add_option("to", texts_.to, "Postcode")->required()->option_text(" ");
    AddSource(distance);
    distance.callback([this] { line_.command = DistanceCommand{Wide(texts_.from), Wide(texts_.to)}; });
}

void Grammar::AddClean() {
    CLI::App& clean = Add("clean", "Check and complete the addresses of a CSV list");
    clean.add_option("input", texts_.input, "CSV file, - for standard input")->required()->option_text(" ");
    clean.add_option("output", texts_.output, "CSV file, - for standard output")->required()->option_text(" ");
    clean.add_option("--postcode", texts_.postcodeColumn, "Column with the postcode")
        ->required()
        ->option_text("COLUMN");
    clean.add_option("--house", texts_.houseColumn, "Column with house number, name or first line")
        ->option_text("COLUMN");
    clean.add_flag("--resume", texts_.resume, "Continue after the rows that the output holds");
    clean.add_flag("--overwrite", texts_.overwrite, "Replace an output that exists");
    clean.add_option("--separator", texts_.separator, "Character or \"tab\"; else as the header has it")
        ->check([](const std::string& text) {
            return text.size() == 1 || text == "tab" || text == "\\t" ? "" : "one character or \"tab\"";
        })
        ->option_text("CHARACTER");
    clean.add_option("--encoding", texts_.encoding, "utf-8 or windows-1252; else as the file has it")
        ->check(CLI::IsMember({"utf-8", "windows-1252"}, CLI::ignore_case))
        ->option_text("NAME");
    clean.add_option("--threads", texts_.threads, "Threads; else one for each processor")
        ->check(CLI::Range(1U, kMostThreads))
        ->option_text("N");
    AddSource(clean);
    clean.callback([this] {
        CleanRequest request;
        request.input = PathOf(texts_.input);
        request.output = PathOf(texts_.output);
        request.postcodeColumn = Wide(texts_.postcodeColumn);
        request.houseColumn = Wide(texts_.houseColumn);
        request.separator = SeparatorOf(texts_.separator);
        if (!texts_.encoding.empty()) request.utf8 = support::UpperCase(Wide(texts_.encoding)) == L"UTF-8";
        request.resume = texts_.resume;
        request.overwrite = texts_.overwrite;
        const unsigned processors = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads);
        request.threads = texts_.threads == 0 ? processors : texts_.threads;
        line_.command = std::move(request);
    });
}

void Grammar::AddNearest() {
    CLI::App& nearest = Add("nearest", "List the points of a CSV file around a postcode");
    nearest.add_option("points", texts_.points, "CSV file, - for standard input")->required()->option_text(" ");
    nearest.add_option("--at", texts_.at, "Postcode")->required()->option_text("POSTCODE");
    nearest.add_option("--within", texts_.within, "Kilometres")
        ->required()
        ->check(CLI::PositiveNumber)
        ->option_text("KM");
    nearest.add_option("--latitude", texts_.latitude, "Column of the latitude; else latitude")->option_text("COLUMN");
    nearest.add_option("--longitude", texts_.longitude, "Column of the longitude; else longitude")
        ->option_text("COLUMN");
    nearest.add_option("--most", texts_.most, "Show at most so many")->option_text("N");
    AddSource(nearest);
    nearest.callback([this] {
        line_.command = NearestRequest{PathOf(texts_.points),
                                       Wide(texts_.at),
                                       texts_.within,
                                       Wide(texts_.latitude),
                                       Wide(texts_.longitude),
                                       '\0',
                                       texts_.most};
    });
}

void Grammar::AddDataCommands() {
    const auto addFolder = [this](CLI::App& command) {
        command.add_option("--data", texts_.data, "Folder of the data files")->option_text("FOLDER");
    };
    CLI::App& status = Add("status", "Show dates, sizes and rows of the data files");
    addFolder(status);
    status.callback([this] { line_.command = StatusCommand{}; });

    CLI::App& update = Add("update", "Bring the data up to date without questions");
    addFolder(update);
    update.add_flag("--download", texts_.download, "Fetch new packages from the service first");
    update.add_option("--from", texts_.packages, "Copy the packages of this folder first")->option_text("FOLDER");
    update.add_option("--service", texts_.service, "Address of the web service")->option_text("URL");
    update.add_option("--key", texts_.key, "Data key for the service")->option_text("KEY");
    update.callback([this] {
        UpdateCommand command;
        command.download = texts_.download;
        if (!texts_.packages.empty()) command.from = Wide(texts_.packages);
        line_.command = std::move(command);
    });

    CLI::App& check = Add("check", "Check the data files for damage");
    addFolder(check);
    check.callback([this] { line_.command = CheckCommand{}; });

    CLI::App& doctor = Add("doctor", "Examine this installation");
    doctor.add_option("--data", texts_.data, "Folder of the data files")->option_text("FOLDER");
    doctor.add_option("--service", texts_.service, "Address of the web service")->option_text("URL");
    doctor.add_option("--key", texts_.key, "Data key for the service")->option_text("KEY");
    doctor.callback([this] { line_.command = DoctorCommand{}; });
}

// What the command line leaves open the environment says.
void FillSource(CommandLine& line, const Texts& texts) {
    line.dataFolder = Wide(texts.data);
    line.serviceUrl = Wide(texts.service);
    line.dataKey = Wide(texts.key);
    const bool both =
        std::holds_alternative<UpdateCommand>(line.command) || std::holds_alternative<DoctorCommand>(line.command);
    if (line.dataFolder.empty() && (line.serviceUrl.empty() || both)) {
        line.dataFolder = Wide(EnvironmentText("QUORVEX_DATA").value_or(""));
    }
    if (line.serviceUrl.empty() && (line.dataFolder.empty() || both)) {
        line.serviceUrl = Wide(EnvironmentText("QUORVEX_SERVICE").value_or(""));
    }
    if (line.dataKey.empty()) line.dataKey = Wide(EnvironmentText("QUORVEX_KEY").value_or(""));
    while (line.serviceUrl.ends_with(L'/')) line.serviceUrl.pop_back();
}

} // namespace

CommandLine ReadCommandLine(std::vector<std::string> arguments) {
    CommandLine line;
    Texts texts;
    Grammar grammar(texts, line);
    const bool wantsJson = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
    std::reverse(arguments.begin(), arguments.end()); // as CLI11 takes them
    try {
        grammar.app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream errors;
        const int code = grammar.app.exit(error, out, errors);
        line.command = {};
        line.json = wantsJson; // the error may precede the flag
        line.text = out.str() + errors.str();
        line.exitCode = code == 0 ? 0 : static_cast<int>(Outcome::WrongCall);
        return line;
    }
    FillSource(line, texts);
    return line;
}

} // namespace quorvex::cli
