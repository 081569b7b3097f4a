#include "support/error.h"
#include "support/text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace quorvex::support {
namespace {

constexpr double kSmallestPlain = 1e-7;
constexpr double kLargestPlain = 1e21;

struct Scan {
    double value = 0;
    std::size_t length = 0; // characters read; 0: no number
};

// from_chars knows no leading plus and no wide characters; digits beyond ASCII are no digits here.
Scan ScanNumber(std::wstring_view text) {
    std::string ascii;
    ascii.reserve(text.size());
    for (const wchar_t c : text) {
        if (c <= 0 || c > 126) break;
        ascii.push_back(static_cast<char>(c));
    }
    const std::size_t plus = !ascii.empty() && ascii.front() == '+' ? 1 : 0;
    const char* const first = ascii.data() + plus;
    const char* const last = ascii.data() + ascii.size();
    if (first == last || !(*first == '-' || *first == '.' || (*first >= '0' && *first <= '9'))) return {};
    if (plus == 1 && *first == '-') return {};
    Scan scan;
    const auto [end, error] = std::from_chars(first, last, scan.value);
    if (error != std::errc() || !std::isfinite(scan.value)) return {};
    scan.length = static_cast<std::size_t>(end - ascii.data());
    return scan;
}

} // namespace

void AppendNumber(std::wstring& text, std::int64_t number) {
    std::array<char, 24> buffer{};
    const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    text.append(buffer.data(), written.ptr);
}

std::wstring NumberText(double number) {
    // Figures of everyday size never take an exponent: hosts show these texts to people.
    const double size = std::fabs(number);
    const bool plain = size == 0 || (size >= kSmallestPlain && size < kLargestPlain);
    std::array<char, 64> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                            plain ? std::chars_format::fixed : std::chars_format::scientific);
    return error == std::errc() ? std::wstring(buffer.data(), end) : std::wstring(L"0");
}

double RoundedTo15Digits(double number) {
    std::array<char, 64> buffer{};
    const auto written =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::scientific, 14);
    double rounded = number;
    std::from_chars(buffer.data(), written.ptr, rounded);
    return rounded;
}

bool IsNumber(std::wstring_view text) {
    const std::wstring_view trimmed = Trim(text);
    return !trimmed.empty() && ScanNumber(trimmed).length == trimmed.size();
}

double ParseNumber(std::wstring_view text) {
    const std::wstring_view trimmed = Trim(text);
    const Scan scan = ScanNumber(trimmed);
    if (trimmed.empty() || scan.length != trimmed.size()) throw Error(kErrorTypeMismatch, L"Type mismatch");
    return scan.value;
}

double LeadingNumber(std::wstring_view text) {
    const std::size_t first = text.find_first_not_of(L' ');
    return first == std::wstring_view::npos ? 0 : ScanNumber(text.substr(first)).value;
}

} // namespace quorvex::support
