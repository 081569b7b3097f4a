#pragma once

#include "quorvex/clean.h"
#include "quorvex/data_commands.h"
#include "quorvex/doctor.h"
#include "quorvex/nearest_command.h"

#include <string>
#include <variant>
#include <vector>

namespace quorvex::cli {

struct FindCommand {
    std::wstring postcode;
    std::wstring house;
};
struct RecordCommand {
    std::wstring id;
};
struct StreetCommand {
    std::wstring postcode;
};
struct PostZonCommand {
    std::wstring key;
};
struct DistanceCommand {
    std::wstring from;
    std::wstring to;
};
struct StatusCommand {};
struct CheckCommand {};
struct DoctorCommand {};

using Command = std::variant<std::monostate, FindCommand, RecordCommand, StreetCommand, PostZonCommand, DistanceCommand,
                             CleanRequest, NearestRequest, StatusCommand, UpdateCommand, CheckCommand, DoctorCommand>;

struct CommandLine {
    bool json = false;
    std::wstring dataFolder; // empty: the service is asked
    std::wstring serviceUrl; // empty: the built-in one
    std::wstring dataKey;
    Command command; // monostate: print the text and end with the exit code
    std::string text;
    int exitCode = 0;
};

// Never throws for wrong arguments: text then says what is wrong and exitCode is that of a wrong call.
CommandLine ReadCommandLine(std::vector<std::string> arguments);

} // namespace quorvex::cli
