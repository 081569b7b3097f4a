#include "quorvex/address_source.h"

#include "lookups/address_list.h"
#include "lookups/address_record.h"
#include "object/tag_reader.h"
#include "quorvex/house_match.h"
#include "support/error.h"

#include <unordered_map>

namespace quorvex::cli {
namespace {

class WebSource final : public AddressSource {
  public:
    explicit WebSource(object::Quorvex& object) : object_(object) {}

    void EndBatch() override { found_.clear(); }

    const PostcodeAddresses* Find(const std::wstring& key) override {
        const auto [entry, isNew] = found_.try_emplace(key);
        if (isNew) {
            try {
                entry->second = Ask(key);
            } catch (...) {
                found_.erase(entry); // asked again for the next row
                throw;
            }
        }
        return entry->second.get();
    }

    RecordCells Record(const PostcodeAddresses& addresses, std::size_t premise) override {
        RecordCells cells;
        if (premise >= addresses.sources.size()) {
            cells[7] = addresses.postcode; // a list of lines does not tell what they share
            return cells;
        }
        if (!lookups::GetFullAddressRecordByAddressID(object_, std::wstring(addresses.sources[premise]))) {
            throw support::Error(support::kErrorInvalidCall, object_.General_errormessage);
        }
        const object::Quorvex& o = object_;
        return {o.Address_Id,           o.Address_Organisation,
                o.Address_Line1,        o.Address_Line2,
                o.Address_Line3,        o.Address_Town,
                o.Address_County,       o.Address_Postcode,
                o.Address_Country,      o.Address_Deliverypointsuffix,
                o.Address_NoHouseHolds, o.Address_Smallorg,
                o.Address_Mailsort,     o.Address_Spare};
    }

  private:
    // Nothing if there is no such postcode.
    std::unique_ptr<PostcodeAddresses> Ask(const std::wstring& key) {
        auto addresses = std::make_unique<PostcodeAddresses>();
        addresses->postcode = WrittenPostcode(key);
        if (!lookups::GetFullAddressToList(object_, addresses->postcode)) {
            throw support::Error(support::kErrorInvalidCall, object_.General_errormessage);
        }
        for (;;) {
            const std::wstring record = object_.AddressData.TakeBetween(L"<record>", L"</record>");
            if (record.empty()) break;
            addresses->premises.emplace_back(addresses->texts.emplace_back(object::ReadElement(record, L"line")));
            addresses->sources.emplace_back(addresses->texts.emplace_back(object::ReadElement(record, L"id")));
        }
        if (addresses->premises.empty()) return nullptr;
        return addresses;
    }

    object::Quorvex& object_;
    std::unordered_map<std::wstring, std::unique_ptr<PostcodeAddresses>> found_;
};

} // namespace

std::unique_ptr<AddressSource> MakeWebSource(object::Quorvex& object) {
    return std::make_unique<WebSource>(object);
}

} // namespace quorvex::cli
