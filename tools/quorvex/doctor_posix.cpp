#include "quorvex/doctor.h"

namespace quorvex::cli {

void ExamineInstallation(Findings&) {}

} // namespace quorvex::cli
