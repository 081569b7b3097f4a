#pragma once

#include "object/quorvex.h"
#include "quorvex/program_platform.h"
#include "quorvex/report.h"

#include <string>
#include <vector>

namespace quorvex::cli {

enum class Grade { Ok, Warning, Problem };

// One thing that was examined, and what to do about it.
struct Finding {
    Grade grade = Grade::Ok;
    std::wstring subject;
    std::wstring what;
    std::wstring advice;
};
using Findings = std::vector<Finding>;

// The parts of an examination. Each adds what it finds; nothing throws.
void ExamineData(object::Quorvex& object, Findings& findings);
void ExamineService(object::Quorvex& object, Findings& findings);
void ExamineInstallation(Findings& findings); // nothing to examine where COM does not exist
void ExamineSurroundings(const support::Platform& platform, Findings& findings); // proxy file, clock

// All of them; columns: grade, subject, finding, advice. A failure if there is a problem.
Report Examine(object::Quorvex& object);

} // namespace quorvex::cli
