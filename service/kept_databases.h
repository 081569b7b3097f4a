#pragma once

#include "database/jet/jet_provider.h"

#include <map>
#include <memory>
#include <string>

namespace quorvex::service {

// Databases kept open for one reader, so that an answer need not find its table again. A kept database holds no lock,
// or an update would wait for ever: instead the file's stamp tells before and after each use that nobody wrote to it.
// One thread at a time.
class KeptDatabases final : public database::DatabaseKeeper {
  public:
    KeptDatabases();
    ~KeptDatabases() override;
    KeptDatabases(const KeptDatabases&) = delete;
    KeptDatabases& operator=(const KeptDatabases&) = delete;

    std::unique_ptr<jet::Database> Take(const std::wstring& file) override;
    jet::Storage& Files() override;
    void Keep(const std::wstring& file, std::unique_ptr<jet::Database> database) override;

    // Whether no file was written to while it was read without a lock since the last call.
    bool Unchanged();

    // While it lives nothing is kept, and every database is opened with its lock.
    class Locked {
      public:
        explicit Locked(KeptDatabases& kept);
        ~Locked();
        Locked(const Locked&) = delete;
        Locked& operator=(const Locked&) = delete;

      private:
        KeptDatabases& kept_;
    };

  private:
    struct Kept;
    class UnlockableStorage;

    std::map<std::wstring, Kept> kept_;
    std::unique_ptr<UnlockableStorage> storage_;
    bool changed_ = false;
    bool locked_ = false;
};

} // namespace quorvex::service
