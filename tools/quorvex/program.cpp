#include "quorvex/program.h"

#include "quorvex/command_line.h"
#include "quorvex/console.h"
#include "quorvex/lookup_commands.h"
#include "quorvex/program_platform.h"
#include "support/error.h"
#include "support/text.h"

#include <exception>

namespace quorvex::cli {
namespace {

Report WrongCall(const char* command, std::wstring message) {
    Report report(command);
    report.End(Outcome::WrongCall, std::move(message));
    return report;
}

// Runs the command that was given.
class Runner {
  public:
    Runner(Console& console, const CommandLine& line) : console_(console), platform_(console) {
        object_.LMSetDataPath(line.dataFolder);
        object_.SetServiceURL(line.serviceUrl);
        object_.SetDataKey(line.dataKey);
    }

    Report operator()(std::monostate) { return Report(""); }
    Report operator()(const FindCommand& command) { return Find(object_, command.postcode, command.house); }
    Report operator()(const RecordCommand& command) { return Record(object_, command.id); }
    Report operator()(const StreetCommand& command) { return Street(object_, command.postcode); }
    Report operator()(const PostZonCommand& command) { return PostZon(object_, command.key); }
    Report operator()(const DistanceCommand& command) { return Distance(object_, command.from, command.to); }
    Report operator()(const NearestRequest& command) { return Nearest(object_, command); }
    Report operator()(const StatusCommand&) {
        return WithData("status", [&] { return Status(object_); });
    }
    Report operator()(const CheckCommand&) {
        return WithData("check", [&] { return Check(object_); });
    }
    Report operator()(const UpdateCommand& command) {
        return WithData("update", [&] { return UpdateData(object_, platform_, command); });
    }
    Report operator()(const DoctorCommand&) { return Examine(object_); }
    Report operator()(const CleanRequest& command) {
        constexpr std::size_t kRowsAtOnceFromService = 20; // each may cost two requests
        CleanRequest request = command;
        if (object_.LocalMode()) {
            request.makeSource = [this] { return MakeLocalSource(object_.DataPath(), turns_); };
        } else {
            request.makeSource = [this] { return MakeWebSource(object_); };
            request.threads = 1;
            request.batchRows = kRowsAtOnceFromService;
        }
        return Clean(console_, request);
    }

  private:
    template <typename Body>
    Report WithData(const char* command, Body body) {
        if (object_.LocalMode()) return body();
        return WrongCall(command, L"name the data folder with --data or in QUORVEX_DATA");
    }

    Console& console_;
    ProgramPlatform platform_;
    object::Quorvex object_{platform_.Surroundings(), platform_.Databases()};
    ReadTurns turns_;
};

std::string NameOf(const std::vector<std::string>& arguments) {
    return arguments.empty() ? std::string() : arguments.front();
}

Report Failure(const std::string& command, const std::wstring& message) {
    Report report(command);
    report.End(Outcome::Failed, message);
    return report;
}

Report RunCommand(Console& console, const CommandLine& line, const std::string& name) {
    try {
        return std::visit(Runner(console, line), line.command);
    } catch (const support::Error& error) {
        return Failure(name, error.Description());
    } catch (const std::bad_alloc&) {
        return Failure(name, L"not enough memory");
    } catch (const std::exception& error) {
        return Failure(name, support::FromUtf8(error.what()));
    }
}

// A list that goes to standard output must not be followed by anything else.
bool OutputIsTaken(const CommandLine& line) {
    const auto* const clean = std::get_if<CleanRequest>(&line.command);
    return clean != nullptr && clean->output == "-";
}

} // namespace

int RunProgram(std::vector<std::string> arguments) {
    Console console;
    WatchForStop();
    const std::string name = NameOf(arguments);
    const CommandLine line = ReadCommandLine(std::move(arguments));
    if (std::holds_alternative<std::monostate>(line.command)) {
        if (line.exitCode == 0) {
            console.Out(line.text);
        } else if (line.json) {
            const std::wstring message = support::ReplaceAll(support::FromUtf8(line.text), L"\n", L" ");
            console.Out(WrongCall(name.c_str(), std::wstring(support::Trim(message))).Json());
        } else {
            console.Error(line.text);
        }
        return console.Finish() ? line.exitCode : static_cast<int>(Outcome::Failed);
    }
    Console::UseBinaryStreams();
    const Report report = RunCommand(console, line, name);
    const std::string text = line.json ? report.Json() : report.Text();
    if (OutputIsTaken(line)) {
        console.Error(text);
    } else {
        console.Out(text);
    }
    console.Finish(); // on one terminal the message follows what it is about
    if (!line.json && !report.Message().empty()) console.Error("quorvex: " + support::ToUtf8(report.Message()) + "\n");
    return console.Finish() ? static_cast<int>(report.Result()) : static_cast<int>(Outcome::Failed);
}

} // namespace quorvex::cli
