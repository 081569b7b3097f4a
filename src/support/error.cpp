#include "support/error.h"

#include "support/text.h"

#include <utility>

namespace quorvex::support {

Error::Error(long number, std::wstring description)
    : number_(number), description_(std::move(description)), what_(ToUtf8(description_)) {}

Error CurrentError() {
    try {
        throw;
    } catch (const Error& error) {
        return error;
    } catch (const std::exception& error) {
        return {kErrorInternal, FromUtf8(error.what())};
    } catch (...) {
        return {kErrorInternal, L"Internal error"};
    }
}

} // namespace quorvex::support
