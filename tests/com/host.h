#pragma once

#include "com/automation.h"
#include "testing/temp_folder.h"

#include <gtest/gtest.h>
#include <quorvex_com.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

namespace quorvex::testing {

template <typename Interface>
struct Releaser {
    void operator()(Interface* object) const { object->Release(); }
};
template <typename Interface>
using Ptr = std::unique_ptr<Interface, Releaser<Interface>>;

// The DLL of this build: two folders above the test.
std::filesystem::path DllPath();

// The DLL loaded by its path, as a host does that keeps it beside itself.
class LoadedDll {
  public:
    LoadedDll();
    ~LoadedDll();
    LoadedDll(const LoadedDll&) = delete;
    LoadedDll& operator=(const LoadedDll&) = delete;

    HMODULE Module() const { return module_; }
    Ptr<IClassFactory> Factory() const;
    Ptr<_Quorvex> Create() const;
    HRESULT CanUnload() const;
    HRESULT Register(bool on) const; // for the machine
    HRESULT Install(bool on, const wchar_t* commandLine) const;

  private:
    HMODULE module_;
};

// An object by its registered class; null with a failed test where that is not possible.
Ptr<_Quorvex> CreateRegistered();

// In a single-threaded apartment, as all hosts of the component run, with one object that asks nobody: its service
// address leads to a closed port.
class ComTest : public ::testing::Test {
  protected:
    ComTest();
    ~ComTest() override;

    // Local mode on a copy of the sample data: logs are written there.
    void UseSample(_Quorvex* object);
    std::wstring SampleFolder();

    Ptr<_Quorvex> object_;

  private:
    TempFolder logs_;
    std::unique_ptr<TempFolder> sample_;
};

// Closes every window that this process shows meanwhile, so that no call waits for a user.
class WindowCloser {
  public:
    WindowCloser();
    ~WindowCloser();
    WindowCloser(const WindowCloser&) = delete;
    WindowCloser& operator=(const WindowCloser&) = delete;

    int Closed() const { return closed_; }

  private:
    std::atomic<bool> stop_{false};
    std::atomic<int> closed_{0};
    std::thread thread_;
};

} // namespace quorvex::testing
