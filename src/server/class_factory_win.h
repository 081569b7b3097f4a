#pragma once

#include "server/module_win.h"

#include <unknwn.h>

namespace quorvex::server {

// Makes lookup objects. Not aggregatable.
class ClassFactory final : public IClassFactory {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

  private:
    ~ClassFactory() = default;

    ModuleReference module_;
    LONG references_ = 1;
};

} // namespace quorvex::server
