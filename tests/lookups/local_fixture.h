#pragma once

#include "database/jet/jet_provider.h"
#include "object/quorvex.h"
#include "support/process_state.h"
#include "testing/fake_platform.h"
#include "testing/temp_folder.h"
#include "testing/truth.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorvex::testing {

// A lookup object in local mode over the sample data and the embedded engine.
class LocalTest : public ::testing::Test {
  protected:
    LocalTest() {
        platform.databases = &databases;
        UseFolder(DataFolder(L"sample"));
    }
    ~LocalTest() override { support::Process() = {}; }

    void UseFolder(const std::wstring& folder) {
        object.LMSetDataPath(folder);
        support::Process().dataPath = logs.Text(); // the sample folder stays as it is
    }

    std::vector<TsvRow> Truth(const std::wstring& name) { return ReadTsv(DataFolder(L"sample\\truth") + L"\\" + name); }
    std::string ErrorLog() {
        const std::wstring file = logs.File(L"Error1.log");
        return support::FileExists(file) ? support::ReadFileBytes(file) : std::string();
    }

    TempFolder logs;
    database::JetProvider databases;
    FakePlatform platform;
    object::Quorvex object{platform, platform};
};

} // namespace quorvex::testing
