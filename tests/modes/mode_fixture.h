#pragma once

#include "com/host.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace quorvex::testing {

using TextProperty = std::pair<const wchar_t*, HRESULT (STDMETHODCALLTYPE _Quorvex::*)(BSTR*)>;

// The properties that a record leaves behind.
extern const std::vector<TextProperty> kAddressProperties;
extern const std::vector<TextProperty> kPostZonProperties;

std::wstring Read(_Quorvex& object, const TextProperty& property);
// "name=value" of each.
std::vector<std::wstring> ReadAll(_Quorvex& object, const std::vector<TextProperty>& properties);

// One object in web mode, one in local mode on the same data. The service's address is in QUORVEX_SERVICE_URL.
class ModeTest : public ComTest {
  protected:
    ModeTest();

    _Quorvex& Web() { return *object_; }
    _Quorvex& Local() { return *local_; }
    // A page of the service's control.
    std::wstring Control(const std::wstring& page);
    // The path and query that the service saw last.
    std::wstring LastTarget();

  private:
    std::wstring url_;
    Ptr<_Quorvex> local_;
    Ptr<_Quorvex> control_;
};

} // namespace quorvex::testing
