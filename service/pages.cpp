#include "service/pages.h"

#include "object/tag_reader.h"
#include "support/error.h"
#include "support/text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace quorvex::service {
namespace {

constexpr char kXml[] = "text/xml; charset=utf-8";
constexpr std::string_view kUpdatesPath = "/updates/";

// Zoom levels of web maps.
constexpr std::array<std::pair<const wchar_t*, const wchar_t*>, 3> kZooms = {{
    {L"STREET", L"17"},
    {L"DISTRICT", L"14"},
    {L"AREA", L"12"},
}};

std::wstring PercentEncoded(const std::wstring& text) {
    std::wstring encoded;
    for (const char c : support::ToUtf8(text)) {
        const bool plain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' ||
                           c == '.' || c == '_' || c == '~';
        if (plain) {
            encoded.push_back(static_cast<wchar_t>(c));
        } else {
            std::array<char, 4> hex{};
            std::snprintf(hex.data(), hex.size(), "%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
            encoded.append(hex.data(), hex.data() + 3);
        }
    }
    return encoded;
}

std::wstring Filled(const std::wstring& address, std::wstring_view placeholder, const std::wstring& value) {
    return support::ReplaceAll(address, placeholder, PercentEncoded(value));
}

PageAnswer NotFound() {
    return {404, "text/plain; charset=utf-8", "There is no such page here.\n", std::nullopt};
}

} // namespace

PageAnswer Pages::Get(std::string_view target, const std::string& base) const {
    const std::string path = PathOf(target);
    if (path.starts_with(kUpdatesPath)) {
        const auto file = updates_.Find(std::string_view(path).substr(kUpdatesPath.size()));
        return file ? PageAnswer{200, "application/zip", {}, file} : NotFound();
    }
    const std::optional<std::wstring> document = Document(path, target, base);
    return document ? PageAnswer{200, kXml, support::ToUtf8(*document), std::nullopt} : NotFound();
}

std::optional<std::wstring> Pages::Document(const std::string& path, std::string_view target,
                                            const std::string& base) const {
    if (path == "/xmlservice/searchforaddress.aspx") {
        const Query query(target, {"datakey", "postcode", "com", "username"});
        return Charged(query, [&] { return data_.AddressList(query["postcode"]); });
    }
    if (path == "/xmlservice/searchforaddressadv.aspx") {
        const Query query(
            target, {"datakey", "com", "company", "house", "street", "town", "county", "postcodearea", "username"});
        return Charged(query, [&] { return SearchAdvanced(query); });
    }
    if (path == "/xmlservice/searchforthoroughfareaddress.aspx") {
        const Query query(target, {"datakey", "postcode", "com", "username"});
        return Charged(query, [&] { return data_.StreetRecord(query["postcode"]); });
    }
    if (path == "/xmlservice/getaddressrecord.aspx") {
        const Query query(target, {"datakey", "id", "com", "username"});
        return Charged(query, [&] { return data_.AddressRecord(query["id"]); });
    }
    if (path == "/xmlservice/searchforpostzondata.aspx") {
        const Query query(target, {"datakey", "postcode", "com", "username", "homepostcode"});
        return Charged(query, [&] { return data_.PostZonRecord(query["postcode"], query["homepostcode"]); });
    }
    if (path == "/xmlservice/geturlforprefuredmap.aspx")
        return MapAddress(Query(target, {"postcode", "zoomlevel", "com"}));
    if (path == "/xmlservice/getlookups.aspx") return Lookups(Query(target, {"datatype"}));
    if (path == "/xmlservice/updatedatalist.aspx") return UpdateList(Query(target, {"f", "t", "z"}), base);
    return std::nullopt;
}

// A lookup on somebody's account: what finds something costs a credit.
template <typename Lookup>
std::wstring Pages::Charged(const Query& query, Lookup lookup) const {
    const std::wstring& key = query["datakey"];
    Accounts::Balance balance = accounts_.Take(key, query["username"]);
    Reply reply = Refused(balance.refusal);
    if (balance.refusal.empty()) {
        try {
            reply = lookup();
        } catch (const support::Error& error) {
            reply = Refused(L"The data cannot be read: " + error.Description());
        }
        if (reply.free) balance = accounts_.GiveBack(key);
    }
    if (reply.popMessage.empty()) reply.popMessage = settings_.popMessage;
    return ReplyText(reply, {balance.low, balance.text, index_.ListVersion(), settings_.accountPage});
}

Reply Pages::SearchAdvanced(const Query& query) const {
    const AddressIndex::Result found = index_.Search(
        {query["company"], query["house"], query["street"], query["town"], query["county"], query["postcodearea"]});
    if (!found.criteriaGiven) return Refused(L"Please enter some criteria");
    Reply reply;
    reply.confirm = true;
    reply.free = found.lines == 0;
    if (found.lines == 0) reply.errorMessage = L"No address meets these criteria";
    if (found.cut) {
        reply.popMessage = L"Only the first " + std::to_wstring(AddressIndex::kMostLines) +
                           L" addresses are shown. Please be more specific.";
    }
    reply.body =
        Element(L"recordcount", std::to_wstring(found.lines)) + L"<records>" + found.records + L"</records>\r\n";
    return reply;
}

// A map at one of the three zoom levels, or a directory of services for "category:refinement".
std::wstring Pages::MapAddress(const Query& query) const {
    const std::wstring& postcode = query["postcode"];
    const std::wstring& zoomLevel = query["zoomlevel"];
    const auto answer = [](const std::wstring& url, const std::wstring& error) {
        return service::Document(Element(L"url", url) + Element(L"errormessage", error));
    };
    if (support::Trim(postcode).empty()) return answer({}, L"Please specify Postcode");
    if (zoomLevel.find(L':') != std::wstring::npos) {
        const std::wstring words = support::ReplaceAll(zoomLevel, L":", L" ");
        return answer(Filled(Filled(settings_.directoryUrl, L"{words}", words), L"{postcode}", postcode), {});
    }
    const auto zoom = std::find_if(kZooms.begin(), kZooms.end(), [&zoomLevel](const auto& entry) {
        return support::UpperCase(zoomLevel) == entry.first;
    });
    if (zoom == kZooms.end()) return answer({}, L"The zoom level is Area, District or Street");
    try {
        const Reply place = data_.PostZonRecord(postcode, {});
        if (!place.confirm) return answer({}, place.errorMessage);
        std::wstring url =
            Filled(settings_.mapUrl, L"{latitude}", object::ReadElement(place.body, L"pz_latitude_wgs84"));
        url = Filled(url, L"{longitude}", object::ReadElement(place.body, L"pz_longitude_wgs84"));
        return answer(Filled(Filled(url, L"{zoom}", zoom->second), L"{postcode}", postcode), {});
    } catch (const support::Error& error) {
        return answer({}, L"The data cannot be read: " + error.Description());
    }
}

std::wstring Pages::Lookups(const Query& query) const {
    if (query["datatype"] != L"1") return service::Document(Element(L"errormessage", L"Unknown data type"));
    return service::Document(Element(L"LookupListVersion", index_.ListVersion()) + Element(L"A", index_.Areas()) +
                             Element(L"T", index_.Towns()) + Element(L"O", index_.Counties()));
}

std::wstring Pages::UpdateList(const Query& query, const std::string& base) const {
    const std::string full = support::ToUtf8(query["f"]);
    const std::string street = support::ToUtf8(query["t"]);
    const std::string postZon = support::ToUtf8(query["z"]);
    if (!IsDateText(full) || !IsDateText(street) || !IsDateText(postZon)) {
        return service::Document(Element(L"Confirm", L"") +
                                 Element(L"errormessage", L"Dates are eight digits: year, month, day"));
    }
    std::string list;
    for (const UpdateFolder::Package& package : updates_.Newer(full, street, postZon)) {
        list.append(base).append(kUpdatesPath).append(package.name).append(1, '|');
        list.append(std::to_string(package.size)).append(1, '|').append(package.date).append(1, '|');
    }
    return service::Document(Element(L"Confirm", L"Yes") + Element(L"list", support::FromUtf8(list)));
}

} // namespace quorvex::service
