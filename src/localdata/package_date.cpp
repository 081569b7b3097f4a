#include "localdata/package_date.h"

#include "support/characters.h"

#include <algorithm>
#include <array>

namespace quorvex::localdata {
namespace {

constexpr std::size_t kDateLength = 8;
constexpr std::array<const wchar_t*, 12> kMonths = {L"Jan", L"Feb", L"Mar", L"Apr", L"May", L"Jun",
                                                    L"Jul", L"Aug", L"Sep", L"Oct", L"Nov", L"Dec"};

int Digits(std::wstring_view text, std::size_t at, std::size_t count) {
    int number = 0;
    for (const wchar_t c : text.substr(at, count)) number = number * 10 + static_cast<int>(c - L'0');
    return number;
}

int DaysOfMonth(int year, int month) {
    static constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : kDays[static_cast<std::size_t>(month - 1)];
}

} // namespace

bool IsPackageDate(std::wstring_view text) {
    if (text.size() != kDateLength || !std::all_of(text.begin(), text.end(), support::IsDigit<wchar_t>)) return false;
    const int year = Digits(text, 0, 4);
    const int month = Digits(text, 4, 2);
    const int day = Digits(text, 6, 2);
    return month >= 1 && month <= 12 && day >= 1 && day <= DaysOfMonth(year, month);
}

std::wstring DisplayDate(const std::wstring& date) {
    if (!IsPackageDate(date)) return date;
    return date.substr(6, 2) + L" " + kMonths[static_cast<std::size_t>(Digits(date, 4, 2) - 1)] + L" " +
           date.substr(0, 4);
}

} // namespace quorvex::localdata
