#include "quorvex/doctor.h"

#include "quorvex/service_probe.h"
#include "support/files.h"
#include "support/text.h"
#include "web/endpoints.h"

#include <cstdlib>

namespace quorvex::cli {
namespace {

constexpr wchar_t kTestPostcode[] = L"ZZ99"; // costs nothing
constexpr int kProbeSeconds = 15;
constexpr long long kClockTolerance = 300; // seconds; beyond that certificates and dates begin to be refused
constexpr int kEarliestYear = 2024;
constexpr int kSlowMilliseconds = 3000;

void AddClock(const Probe& probe, Findings& findings) {
    if (probe.clockAhead == 0 && !probe.hasDate) return;
    if (std::llabs(probe.clockAhead) <= kClockTolerance) {
        findings.push_back({Grade::Ok, L"clock", L"agrees with the service's", {}});
        return;
    }
    findings.push_back({Grade::Warning, L"clock",
                        L"is " + std::to_wstring(std::llabs(probe.clockAhead)) + L" seconds " +
                            (probe.clockAhead > 0 ? L"ahead of" : L"behind") + L" the service's",
                        L"set the clock: secure connections and update dates depend on it"});
}

} // namespace

void ExamineService(object::Quorvex& object, Findings& findings) {
    const std::wstring url = web::SearchForAddressUrl(object, kTestPostcode);
    const Probe probe = ProbeUrl(url, kProbeSeconds);
    const std::wstring place = object.ServerURL + L": ";
    // With local data the service is not needed.
    const Grade grade = object.LocalMode() ? Grade::Warning : Grade::Problem;
    if (!probe.cause.empty()) {
        findings.push_back({grade, L"service", place + probe.cause, probe.advice});
        return;
    }
    AddClock(probe, findings);
    if (probe.status >= 400) {
        findings.push_back({grade, L"service", place + L"answers with status " + std::to_wstring(probe.status),
                            L"check the address; a proxy may answer in the service's place"});
    } else if (probe.body.find("<confirm>") == std::string::npos) {
        findings.push_back({grade, L"service", place + L"something else answers than the address service",
                            L"check the address; a sign-in page of the network may answer in its place"});
    } else if (probe.body.find("<confirm>Yes") == std::string::npos) {
        const std::string message = probe.body.substr(probe.body.find("<errormessage>") + 14);
        findings.push_back(
            {grade, L"service",
             place + L"refuses the data key: " + support::FromUtf8(message.substr(0, message.find("</errormessage>"))),
             L"check the key that is given with --key or in QUORVEX_KEY"});
    } else {
        const bool slow = probe.milliseconds > kSlowMilliseconds;
        findings.push_back({slow ? Grade::Warning : Grade::Ok, L"service",
                            place + L"answered in " + std::to_wstring(probe.milliseconds) + L" ms",
                            slow ? L"lookups will feel slow; check the network" : L""});
    }
}

void ExamineSurroundings(const support::Platform& platform, Findings& findings) {
    if (platform.machine.Now().year < kEarliestYear) {
        findings.push_back({Grade::Problem, L"clock", L"the year is " + std::to_wstring(platform.machine.Now().year),
                            L"set the clock: secure connections and update dates depend on it"});
    }
    if (!support::PathExists(L"RegServerProxySettings.xml")) return;
    const std::wstring proxy = NamedProxy();
    const bool usable = proxy.find(L':') != std::wstring::npos && proxy.find(L'/') == std::wstring::npos;
    findings.push_back({usable ? Grade::Ok : Grade::Problem, L"proxy",
                        usable ? L"RegServerProxySettings.xml in this folder names " + proxy
                               : L"RegServerProxySettings.xml in this folder names no usable proxy: \"" + proxy + L"\"",
                        usable ? L"" : L"write <Proxy_Port_80>host:port</Proxy_Port_80>, or remove the file"});
}

} // namespace quorvex::cli
