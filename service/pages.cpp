#include "service/pages.h"

#include "object/tag_reader.h"
#include "support/characters.h"
#include "support/error.h"
#include "support/text.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <iostream>
#include <utility>

namespace quorvex::service {
namespace {

constexpr char kXml[] = "text/xml; charset=utf-8";
constexpr std::string_view kUpdatesPath = "/updates/";
constexpr wchar_t kUnreadable[] = L"The data cannot be read just now. Please try again later.";
constexpr wchar_t kNotReady[] = L"The lists are being made. Please try again in a moment.";

// Zoom levels of web maps.
constexpr std::array<std::pair<const wchar_t*, const wchar_t*>, 3> kZooms = {{
    {L"STREET", L"17"},
    {L"DISTRICT", L"14"},
    {L"AREA", L"12"},
}};

std::wstring PercentEncoded(const std::wstring& text) {
    std::wstring encoded;
    for (const char c : support::ToUtf8(text)) {
        const bool plain = support::IsDigit(c) || support::IsLetter(c) || c == '-' || c == '.' || c == '_' || c == '~';
        if (plain) {
            encoded.push_back(static_cast<wchar_t>(c));
        } else {
            support::AppendPercentEscaped(encoded, static_cast<unsigned char>(c));
        }
    }
    return encoded;
}

std::wstring Filled(const std::wstring& address, std::wstring_view placeholder, const std::wstring& value) {
    return support::ReplaceAll(address, placeholder, PercentEncoded(value));
}

PageAnswer NotFound() {
    PageAnswer answer{404, "text/plain; charset=utf-8", "Page not found.\n"};
    answer.result = "none";
    return answer;
}

PageAnswer XmlAnswer(const std::wstring& document, std::string page) {
    PageAnswer answer{200, kXml, support::ToUtf8(document)};
    answer.page = std::move(page);
    return answer;
}

// What the caller cannot mend stays in the service's own log: it names files.
Reply Unreadable(const support::Error& error) {
    if (error.Number() == support::kErrorTypeMismatch) return Refused(L"A number of the query cannot be read");
    std::cerr << "quorvex-service: " + support::ToUtf8(error.Description()) + "\n";
    return Refused(kUnreadable);
}

} // namespace

// A page that looks up on somebody's account: what finds something costs a credit.
struct Pages::Lookup {
    const char* path;
    const char* name; // for logs
    std::initializer_list<const char*> parameters;
    bool needsIndex;
    Reply (*run)(const Pages& pages, const DataSet& set, const Query& query);
};

const Pages::Lookup* Pages::FindLookup(const std::string& path) {
    static const std::array<Lookup, 5> kLookups = {{
        {"/xmlservice/searchforaddress.aspx",
         "SearchForAddress",
         {"datakey", "postcode", "com", "username"},
         false,
         [](const Pages&, const DataSet& set, const Query& query) { return set.data->AddressList(query["postcode"]); }},
        {"/xmlservice/searchforaddressadv.aspx",
         "SearchForAddressAdv",
         {"datakey", "com", "company", "house", "street", "town", "county", "postcodearea", "username"},
         true,
         [](const Pages&, const DataSet& set, const Query& query) { return SearchAdvanced(set, query); }},
        {"/xmlservice/searchforthoroughfareaddress.aspx",
         "SearchForThoroughfareAddress",
         {"datakey", "postcode", "com", "username"},
         false,
         [](const Pages&, const DataSet& set, const Query& query) {
             return set.data->StreetRecord(query["postcode"]);
         }},
        {"/xmlservice/getaddressrecord.aspx",
         "GetAddressRecord",
         {"datakey", "id", "com", "username"},
         false,
         [](const Pages&, const DataSet& set, const Query& query) { return set.data->AddressRecord(query["id"]); }},
        {"/xmlservice/searchforpostzondata.aspx",
         "SearchForPostZonData",
         {"datakey", "postcode", "com", "username", "homepostcode"},
         false,
         [](const Pages&, const DataSet& set, const Query& query) {
             return set.data->PostZonRecord(query["postcode"], query["homepostcode"]);
         }},
    }};
    const auto found =
        std::find_if(kLookups.begin(), kLookups.end(), [&path](const Lookup& lookup) { return path == lookup.path; });
    return found == kLookups.end() ? nullptr : found;
}

void Pages::Get(const PageRequest& request, Done done) const {
    const std::string path = PathOf(request.target);
    if (path.starts_with(kUpdatesPath)) {
        const auto file = updates_.Find(std::string_view(path).substr(kUpdatesPath.size()));
        PageAnswer answer = NotFound();
        if (file) answer = {200, "application/zip", {}, file};
        answer.page = "updates";
        return done(std::move(answer));
    }
    if (const Lookup* const lookup = FindLookup(path)) {
        const Query query(request.target, lookup->parameters);
        return Charged(*lookup, request, query, std::move(done));
    }
    const auto set = data_.Current();
    if (path == "/xmlservice/geturlforprefuredmap.aspx") {
        const Query query(request.target, {"postcode", "zoomlevel", "com"});
        return done(XmlAnswer(MapAddress(*set, query), "GetUrlforPrefuredMap"));
    }
    if (path == "/xmlservice/getlookups.aspx") return done(Lists(*set, Query(request.target, {"datatype"})));
    if (path == "/xmlservice/updatedatalist.aspx") {
        const Query query(request.target, {"f", "t", "z"});
        return done(XmlAnswer(UpdateList(query, request.base), "UpdateDataList"));
    }
    done(NotFound());
}

PageAnswer BusyAnswer(const std::wstring& message) {
    PageAnswer answer = XmlAnswer(ReplyText(Refused(message), {}), "other");
    answer.status = 503;
    answer.retry = true;
    answer.result = "busy";
    return answer;
}

void Pages::Charged(const Lookup& lookup, const PageRequest& request, const Query& query, Done done) const {
    const auto set = data_.Current();
    if (lookup.needsIndex && !set->index) {
        PageAnswer busy = BusyAnswer(kNotReady);
        busy.page = lookup.name;
        return done(std::move(busy));
    }
    accounts::Accounts::Standing standing = accounts_.Check(query["datakey"], query["username"], request.client);
    if (!standing.refusal.empty()) return done(Rendered(lookup, *set, Refused(standing.refusal), standing));
    Reply reply;
    try {
        reply = lookup.run(*this, *set, query);
    } catch (const support::Error& error) {
        reply = Unreadable(error);
    }
    if (reply.free) return done(Rendered(lookup, *set, reply, standing));
    accounts_.Charge(std::move(standing), request.id, lookup.name,
                     [this, &lookup, set, reply = std::move(reply),
                      done = std::move(done)](const accounts::Accounts::Standing& after) {
                         const bool taken = after.refusal.empty();
                         PageAnswer answer = Rendered(lookup, *set, taken ? reply : Refused(after.refusal), after);
                         answer.credits = taken && after.live ? 1 : 0;
                         done(std::move(answer));
                     });
}

PageAnswer Pages::Rendered(const Lookup& lookup, const DataSet& set, const Reply& reply,
                           const accounts::Accounts::Standing& standing) const {
    const std::wstring version = set.index ? set.index->ListVersion() : std::wstring();
    Reply shown = reply;
    if (shown.popMessage.empty()) shown.popMessage = settings_.popMessage;
    PageAnswer answer =
        XmlAnswer(ReplyText(shown, {standing.low, standing.text, version, settings_.accountPage}), lookup.name);
    answer.account = standing.name;
    if (standing.tooMany || standing.unreachable) {
        answer.status = standing.tooMany ? 429 : 503;
        answer.retry = true;
        answer.result = standing.tooMany ? "refused" : "busy";
    } else if (!standing.refusal.empty()) {
        answer.result = "refused";
    } else if (!reply.confirm || reply.free) {
        answer.result = reply.errorMessage == kUnreadable ? "error" : "none";
    }
    return answer;
}

Reply Pages::SearchAdvanced(const DataSet& set, const Query& query) {
    const AddressIndex::Result found =
        set.index->Search(*set.data, {query["company"], query["house"], query["street"], query["town"], query["county"],
                                      query["postcodearea"]});
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
std::wstring Pages::MapAddress(const DataSet& set, const Query& query) const {
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
        const Reply place = set.data->PostZonRecord(postcode, {});
        if (!place.confirm) return answer({}, place.errorMessage);
        std::wstring url =
            Filled(settings_.mapUrl, L"{latitude}", object::ReadElement(place.body, L"pz_latitude_wgs84"));
        url = Filled(url, L"{longitude}", object::ReadElement(place.body, L"pz_longitude_wgs84"));
        return answer(Filled(Filled(url, L"{zoom}", zoom->second), L"{postcode}", postcode), {});
    } catch (const support::Error& error) {
        return answer({}, Unreadable(error).errorMessage);
    }
}

PageAnswer Pages::Lists(const DataSet& set, const Query& query) {
    const std::string name = "GetLookups";
    if (query["datatype"] != L"1")
        return XmlAnswer(service::Document(Element(L"errormessage", L"Unknown data type")), name);
    if (!set.index) {
        PageAnswer busy = BusyAnswer(kNotReady);
        busy.page = name;
        return busy;
    }
    const AddressIndex& index = *set.index;
    return XmlAnswer(service::Document(Element(L"LookupListVersion", index.ListVersion()) +
                                       Element(L"A", index.Areas()) + Element(L"T", index.Towns()) +
                                       Element(L"O", index.Counties())),
                     name);
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
