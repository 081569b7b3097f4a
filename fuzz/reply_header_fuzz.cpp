#include "object/reply_header.h"
#include "support/text.h"
#include "testing/fake_platform.h"

#include <cstdint>
#include <cstdlib>

namespace {

using namespace quorvex;

void Check(bool holds) {
    if (!holds) std::abort();
}

} // namespace

// The first byte chooses the mode and whether a record is required; the rest is the body of a reply.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view body(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::wstring reply = support::DecodeReply(body, "text/xml; charset=utf-8");
    const bool local = (data[0] & 1) != 0;
    const bool requireRecord = (data[0] & 2) != 0;

    testing::FakePlatform platform;
    object::Quorvex object(platform, platform);
    if (local) object.LMSetDataPath(L"C:\\data");
    object.Address_Postcode = L"PE13 2QL";
    object.General_confirm = true;
    object::ReadReplyHeader(object, reply, requireRecord);

    Check(platform.messages.empty() && platform.urls.empty());
    if (reply.find(L"<confirm>") == std::wstring::npos) {
        Check(object.General_confirm && object.Address_Postcode == L"PE13 2QL");
        if (!local) Check(object.General_errormessage == reply);
        return 0;
    }
    Check(!object.PostZon_DistanceToHomePostcode.empty());
    if (object.Address_Postcode.empty()) Check(!requireRecord || !object.General_confirm);
    for (const std::wstring* value : {&object.Address_Line1, &object.Address_Town, &object.PostZon_Latitude_wgs84}) {
        Check(support::Trim(*value).size() == value->size());
    }
    return 0;
}
