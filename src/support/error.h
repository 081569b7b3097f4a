#pragma once

#include <exception>
#include <string>

namespace quorvex::support {

// The one failure type inside the component. It stops at the method that owns the documented failure; the error log
// prints its number and description.
class Error : public std::exception {
  public:
    Error(long number, std::wstring description);

    long Number() const { return number_; }
    const std::wstring& Description() const { return description_; }
    const char* what() const noexcept override { return what_.c_str(); } // the description in UTF-8

  private:
    long number_;
    std::wstring description_;
    std::string what_;
};

// Number and text of the exception being handled, whatever its type. Call it in a catch block.
Error CurrentError();

// Numbers of the run-time failures that hosts of automation components know.
inline constexpr long kErrorInvalidCall = 5;
inline constexpr long kErrorOverflow = 6;
inline constexpr long kErrorSubscript = 9;
inline constexpr long kErrorTypeMismatch = 13;
inline constexpr long kErrorBadFile = 52;
inline constexpr long kErrorFileNotFound = 53;
inline constexpr long kErrorFileExists = 58;
inline constexpr long kErrorDiskFull = 61;
inline constexpr long kErrorPermissionDenied = 70;
inline constexpr long kErrorPathAccess = 75;
inline constexpr long kErrorInternal = 51;
// What data access layers report for a record that does not exist.
inline constexpr long kErrorNoRecord = 3021;
inline constexpr long kErrorTimeOut = 1460; // the system's number for it; also of requests that fail without a number
// What data access reports for a damaged, foreign or locked database file (E_FAIL as ADO raises it).
inline constexpr long kErrorDatabase = -2147467259;

} // namespace quorvex::support
