#include "quorvex/address_source.h"

#include "database/connection_string.h"
#include "database/jet/jet_translation.h"
#include "jet/database.h"
#include "localdata/data_file_names.h"
#include "localdata/packed_address.h"
#include "localdata/substitution.h"
#include "quorvex/console.h"
#include "quorvex/house_match.h"
#include "support/error.h"
#include "support/files.h"

#include <chrono>
#include <optional>
#include <thread>
#include <unordered_map>

namespace quorvex::cli {
namespace {

constexpr std::chrono::seconds kLongestWait{60};
constexpr std::chrono::milliseconds kBetweenTries{50};
constexpr std::chrono::milliseconds kReading{500}; // then the file is closed
constexpr std::chrono::milliseconds kPause{40};    // longer than an update waits between two tries

class LocalSource final : public AddressSource {
  public:
    LocalSource(const std::wstring& dataFolder, ReadTurns& turns)
        : turns_(turns), folder_(dataFolder),
          file_(localdata::DataFilePath(dataFolder, *localdata::FindDataFile(L'F'))) {
        if (!support::FileExists(file_)) {
            throw support::Error(support::kErrorFileNotFound, L"Data file does not exist " + file_);
        }
    }

    void BeginBatch() override {
        turns_.Begin();
        try {
            OpenInTime();
        } catch (...) {
            turns_.End();
            throw;
        }
    }

    void EndBatch() override {
        found_.clear();
        addresses_.reset();
        database_.reset();
        turns_.End();
    }

    const PostcodeAddresses* Find(const std::wstring& key) override {
        const auto [entry, isNew] = found_.try_emplace(key);
        if (isNew) {
            try {
                entry->second = Read(key);
            } catch (...) {
                found_.erase(entry); // the next row fails in the same way
                throw;
            }
        }
        return entry->second.get();
    }

    RecordCells Record(const PostcodeAddresses& addresses, std::size_t premise) override {
        const bool one = premise < addresses.sources.size();
        const localdata::RecordFields fields = localdata::AddressRecord(
            one ? addresses.sources[premise] : std::wstring_view(), localdata::ShortenBlanks(addresses.common));
        RecordCells cells;
        if (one) cells[0] = addresses.postcode + L"_" + std::to_wstring(premise + 1) + L"_F";
        std::size_t at = 1;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            if (i != localdata::kUnusedRecordField) cells[at++] = fields[i];
        }
        return cells;
    }

  private:
    void OpenInTime() {
        table_ = localdata::LoadSubstitution(folder_); // an update may bring a new one
        const auto giveUp = std::chrono::steady_clock::now() + kLongestWait;
        for (;;) {
            try {
                OpenFile();
                return;
            } catch (const jet::Error& error) {
                const bool wait = error.code() == jet::ErrorCode::kInUse && !StopRequested() &&
                                  std::chrono::steady_clock::now() < giveUp;
                if (!wait) throw database::FromJet(error, file_);
            }
            std::this_thread::sleep_for(kBetweenTries);
        }
    }

    void OpenFile() {
        database_.emplace(
            jet::Database::Open(support::ToPath(file_), database::ToUtf16(database::kDatabasePassword), {}));
        addresses_.emplace(database_->OpenTable(u"PAF_FULLAddress"));
        const auto column = addresses_->FindColumn(u"FT_Address");
        if (!column) throw jet::Error(jet::ErrorCode::kNoSuchColumn, "the data file has no column FT_Address");
        address_ = *column;
    }

    // Nothing if there is no such postcode.
    std::unique_ptr<PostcodeAddresses> Read(const std::wstring& key) {
        try {
            jet::Cursor rows =
                addresses_->Where({jet::Condition{{}, u"FT_Postcode", jet::CompareOp::kEqual, database::ToUtf16(key)}});
            if (!rows.Next()) return nullptr;
            const jet::Value value = rows.Current().Get(address_);
            const auto* const text = std::get_if<std::u16string>(&value);
            return Unpack(key, text == nullptr ? std::wstring() : database::FromUtf16(*text));
        } catch (const jet::Error& error) {
            throw database::FromJet(error, file_);
        }
    }

    std::unique_ptr<PostcodeAddresses> Unpack(const std::wstring& key, const std::wstring& stored) const {
        auto addresses = std::make_unique<PostcodeAddresses>();
        const std::wstring& plain = addresses->texts.emplace_back(table_.Unscramble(stored));
        localdata::PackedAddress packed = localdata::SplitPackedAddress(plain);
        addresses->premises = packed.premises;
        addresses->sources = std::move(packed.premises);
        addresses->common = packed.common;
        addresses->streetWords = WordsOf(localdata::StreetPart(packed.common));
        addresses->postcode = WrittenPostcode(key);
        return addresses;
    }

    ReadTurns& turns_;
    const std::wstring folder_;
    const std::wstring file_;
    localdata::SubstitutionTable table_;
    std::optional<jet::Database> database_;
    std::optional<jet::Table> addresses_;
    std::size_t address_ = 0;
    std::unordered_map<std::wstring, std::unique_ptr<PostcodeAddresses>> found_;
};

} // namespace

void ReadTurns::Begin() {
    using Clock = std::chrono::steady_clock;
    const auto due = [this] {
        return Clock::now().time_since_epoch().count() - lastPause_ > Clock::duration(kReading).count();
    };
    if (due()) {
        const std::lock_guard everyoneOut(open_);
        if (due()) {
            std::this_thread::sleep_for(kPause);
            lastPause_ = Clock::now().time_since_epoch().count();
        }
    }
    open_.lock_shared();
}

std::unique_ptr<AddressSource> MakeLocalSource(const std::wstring& dataFolder, ReadTurns& turns) {
    return std::make_unique<LocalSource>(dataFolder, turns);
}

} // namespace quorvex::cli
