#include "service/local_data.h"

#include "database/row_reader.h"
#include "localdata/data_file_names.h"
#include "lookups/local_replies.h"
#include "lookups/postcode.h"
#include "service/kept_databases.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <algorithm>

namespace quorvex::service {
namespace {

constexpr std::size_t kObjects = 32; // more answers than these at a time wait for one another

// Cuts an element's line out of a reply and returns the value.
std::wstring TakeLine(std::wstring& reply, const std::wstring& name) {
    const std::wstring start = L"<" + name + L">";
    const std::wstring end = L"</" + name + L">\r\n";
    const std::size_t from = reply.find(start);
    const std::size_t to = from == std::wstring::npos ? from : reply.find(end, from);
    if (to == std::wstring::npos) return {};
    std::wstring value = reply.substr(from + start.size(), to - from - start.size());
    reply.erase(from, to + end.size() - from);
    return value;
}

// A reply as local mode builds it; its header's elements go into the service's header.
Reply FromLocal(std::wstring local) {
    Reply reply;
    reply.confirm = TakeLine(local, L"confirm") == L"Yes";
    reply.creditsText = TakeLine(local, L"credits_display_text");
    reply.errorMessage = TakeLine(local, L"errormessage");
    reply.body = std::move(local);
    return reply;
}

bool IsTest(const std::wstring& postcode) {
    return lookups::LocalPostcode(postcode) == lookups::kTestPostcode;
}

// No postcode holds one, and the queries of the lookups cannot.
bool HasQuote(const std::wstring& text) {
    return text.find(L'\'') != std::wstring::npos;
}

} // namespace

struct LocalData::Reader {
    KeptDatabases kept;
    ServicePlatform platform{&kept};
    object::Quorvex object{platform.Surroundings(), platform.Databases()};
};

class LocalData::Lease {
  public:
    explicit Lease(const LocalData& data) : data_(data) {
        std::unique_lock lock(data_.mutex_);
        data_.returned_.wait(lock, [this] { return !data_.idle_.empty(); });
        reader_ = std::move(data_.idle_.back());
        data_.idle_.pop_back();
    }
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    ~Lease() {
        const std::lock_guard lock(data_.mutex_);
        data_.idle_.push_back(std::move(reader_));
        data_.returned_.notify_one();
    }

    Reader* operator->() { return reader_.get(); }

  private:
    const LocalData& data_;
    std::unique_ptr<Reader> reader_;
};

// An answer during which nobody wrote to the files: one that may have seen half of a change is thrown away and made
// again with the files locked.
template <typename Work>
auto LocalData::Asked(Work work) const {
    Lease lease(*this);
    try {
        auto answer = work(*lease.operator->());
        if (lease->kept.Unchanged()) return answer;
    } catch (const support::Error&) {
        if (lease->kept.Unchanged()) throw;
    }
    const KeptDatabases::Locked locked(lease->kept);
    return work(*lease.operator->());
}

LocalData::~LocalData() = default;

LocalData::LocalData(const std::filesystem::path& folder)
    : folder_(support::FromPath(folder)), table_(localdata::LoadSubstitution(folder_)) {
    const auto here = [this](const localdata::DataFile& file) {
        return support::FileExists(localdata::DataFilePath(folder_, file));
    };
    if (std::none_of(localdata::kDataFiles.begin(), localdata::kDataFiles.end(), here)) {
        throw support::Error(support::kErrorFileNotFound, L"no data files in " + folder_);
    }
    // All made here: giving an object its folder also sets what the whole process shares, and that is for one thread to
    // do.
    idle_.reserve(kObjects);
    for (std::size_t i = 0; i < kObjects; ++i) {
        idle_.push_back(std::make_unique<Reader>());
        idle_.back()->object.LMSetDataPath(folder_);
    }
}

Reply LocalData::AddressList(const std::wstring& postcode) const {
    const lookups::PostcodeAndHouse asked = lookups::SplitCommaForm(postcode);
    if (support::Trim(asked.postcode).empty()) return Refused(L"Please specify Postcode");
    if (HasQuote(asked.postcode)) return Refused(L"Postcode not found: " + asked.postcode);
    const lookups::LocalList list = Asked(
        [&](Reader& reader) { return lookups::LocalAddressList(reader.object, asked.postcode, asked.house, &table_); });
    Reply reply = FromLocal(list.reply);
    reply.free = list.recordCount == 0 || IsTest(asked.postcode);
    reply.body = Element(L"recordcount", std::to_wstring(list.recordCount)) + L"<addressdata>\r\n" + list.records +
                 L"</addressdata>\r\n";
    return reply;
}

Reply LocalData::AddressRecord(const std::wstring& id) const {
    const std::wstring postcode = id.substr(0, id.find(L'_'));
    if (support::Trim(postcode).empty()) return Refused(L"Please specify an address identifier");
    Reply reply;
    if (!HasQuote(postcode)) {
        reply =
            FromLocal(Asked([&](Reader& reader) { return lookups::LocalAddressRecord(reader.object, id, &table_); }));
    }
    if (!reply.confirm) return Refused(L"Address not found: " + id);
    reply.free = IsTest(postcode);
    return reply;
}

Reply LocalData::StreetRecord(const std::wstring& postcode) const {
    if (postcode.size() < 4 || postcode.size() > 8) return Refused(L"Please specify Postcode");
    Reply reply;
    if (!HasQuote(postcode)) {
        reply = FromLocal(
            Asked([&](Reader& reader) { return lookups::LocalThoroughfareRecord(reader.object, postcode, &table_); }));
    }
    if (!reply.confirm) return Refused(L"Postcode not found: " + postcode);
    reply.free = IsTest(postcode);
    return reply;
}

Reply LocalData::PostZonRecord(const std::wstring& key, const std::wstring& homePostcode) const {
    if (key.size() < 5) return Refused(L"Please specify Postcode");
    if (HasQuote(key)) return Refused(L"Postcode not found: " + key);
    Reply reply = FromLocal(Asked([&](Reader& reader) {
        reader.object.SetHomePostCode(HasQuote(homePostcode) ? std::wstring() : homePostcode);
        return lookups::LocalPostZonRecord(reader.object, key);
    }));
    return reply.confirm ? reply : Refused(L"Postcode not found: " + key);
}

localdata::LastUpdateDates LocalData::Dates() const {
    const object::Quorvex object(platform_.Surroundings(), platform_.Databases());
    return localdata::GetLastUpdateDates(object, folder_);
}

std::optional<std::wstring> LocalData::FullRow(const std::wstring& key) const {
    return Asked([&](Reader& reader) -> std::optional<std::wstring> {
        database::RowReader rows(reader.platform.Databases(),
                                 localdata::DataFilePath(folder_, localdata::kDataFiles[0]),
                                 L"SELECT * From [PAF_FULLAddress] WHERE [FT_Postcode]='" + key + L"';");
        if (rows.AtEnd()) return std::nullopt;
        return table_.Unscramble(rows.Text(L"FT_Address"));
    });
}

void LocalData::WalkFull(const std::function<void(const std::wstring&, const std::wstring&)>& visit) const {
    const std::wstring file = localdata::DataFilePath(folder_, localdata::kDataFiles[0]);
    if (!support::FileExists(file)) return;
    database::RowReader rows(platform_.Databases(), file, L"SELECT * From [PAF_FULLAddress];");
    for (; !rows.AtEnd(); rows.Next()) visit(rows.Text(L"FT_Postcode"), table_.Unscramble(rows.Text(L"FT_Address")));
    rows.Close();
}

} // namespace quorvex::service
