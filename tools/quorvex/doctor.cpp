#include "quorvex/doctor.h"

#include "support/text.h"

#include <algorithm>
#include <array>

namespace quorvex::cli {
namespace {

constexpr std::array<const wchar_t*, 3> kGradeNames = {L"ok", L"warning", L"problem"};

} // namespace

Report Examine(object::Quorvex& object) {
    Findings findings;
    findings.push_back({Grade::Ok,
                        L"program",
                        L"quorvex " + object::GetVersion() + L", " + std::to_wstring(sizeof(void*) * 8) + L"-bit, " +
                            object.platform.machine.SystemVersion(),
                        {}});
    ExamineInstallation(findings);
    ExamineData(object, findings);
    ExamineSurroundings(object.platform, findings);
    ExamineService(object, findings);

    Report report("doctor", {"grade", "subject", "finding", "advice"});
    std::array<std::size_t, kGradeNames.size()> counts{};
    for (Finding& finding : findings) {
        ++counts[static_cast<std::size_t>(finding.grade)];
        report.Add({std::wstring(kGradeNames[static_cast<std::size_t>(finding.grade)]), std::move(finding.subject),
                    std::move(finding.what), std::move(finding.advice)});
    }
    const std::size_t problems = counts[static_cast<std::size_t>(Grade::Problem)];
    const std::size_t warnings = counts[static_cast<std::size_t>(Grade::Warning)];
    const auto counted = [](std::size_t n, const wchar_t* what) {
        return std::to_wstring(n) + L" " + what + (n == 1 ? L"" : L"s");
    };
    if (problems != 0) {
        report.End(Outcome::Failed, counted(problems, L"problem") + L", " + counted(warnings, L"warning"));
    } else {
        report.End(Outcome::Done, warnings == 0 ? L"all is well" : counted(warnings, L"warning"));
    }
    return report;
}

} // namespace quorvex::cli
