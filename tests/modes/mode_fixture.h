#pragma once

#include "com/host.h"

#include <map>
#include <string>

namespace quorvex::testing {

// The properties of a prefix ("Address_") by name: what a record leaves behind.
using Properties = std::map<std::wstring, std::wstring>;
Properties ReadAll(_Quorvex& object, const wchar_t* prefix);

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
