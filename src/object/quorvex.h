#pragma once

#include "database/database.h"
#include "object/nearest_list.h"
#include "object/stored_list.h"
#include "support/platform.h"

#include <cstdint>
#include <string>

namespace quorvex::object {

// The lookup object: settings, state of the last reply, lists. It does not depend on COM and does no lookup itself; the
// rooms above take it by reference, read its settings and leave their answers in it. Names are those that hosts use.
class Quorvex {
  public:
    Quorvex(support::Platform& platformOfHost, database::DatabaseProvider& databasesOfHost)
        : platform(platformOfHost), databases(databasesOfHost) {}
    Quorvex(const Quorvex&) = delete;
    Quorvex& operator=(const Quorvex&) = delete;

    support::Platform& platform;
    database::DatabaseProvider& databases; // the engine for the local data files

    // --- Public properties -------------------------------------------------------------------------------------
    std::wstring ServerURL; // base address of the service; a web call that finds it empty stores the default first

    // Header of the last reply.
    std::wstring General_Pop_Message;
    std::wstring General_LookupListVersion;
    bool General_confirm = false;
    std::wstring General_credits_display_text;
    std::wstring General_accountadminpage;
    std::wstring General_errormessage;
    bool General_credits_display_showbutton = false;

    std::int32_t RecordCount = 0;
    std::wstring PostZon_postcode;

    // The current address record.
    std::wstring Address_Id;
    std::wstring Address_Organisation;
    std::wstring Address_Line1;
    std::wstring Address_Line2;
    std::wstring Address_Line3;
    std::wstring Address_Town;
    std::wstring Address_County;
    std::wstring Address_Postcode;
    std::wstring Address_Country;
    std::wstring Address_Deliverypointsuffix;
    std::wstring Address_NoHouseHolds;
    std::wstring Address_Smallorg;
    std::wstring Address_PoBox;
    std::wstring Address_Rawpostcode;
    std::wstring Address_Mailsort;
    std::wstring Address_Unique;
    std::wstring Address_UDPRN;
    std::wstring Address_Spare;

    // The current PostZon data.
    std::wstring PostZon_IntroductionDate;
    std::wstring PostZon_Gridrefeast;
    std::wstring PostZon_Gridrefnorth;
    std::wstring PostZon_County;
    std::wstring PostZon_District;
    std::wstring PostZon_Ward;
    std::wstring PostZon_Usertype;
    std::wstring PostZon_Gridstatus;
    std::wstring PostZon_Country;
    std::wstring PostZon_Wardstatus;
    std::wstring PostZon_NHS_code;
    std::wstring PostZon_NHS_region;
    std::wstring PostZon_Latitude_wgs84;
    std::wstring PostZon_Longitude_wgs84;
    std::wstring PostZon_OSreference;
    std::wstring PostZon_DistanceToHomePostcode;

    std::int16_t ShowHTTPcallsInDetailFlg = 0; // non-zero: every call and reply is shown and put on the clipboard

    // The host's own values; nothing here reads them.
    std::wstring ExtraParms;
    std::wstring GetCountryData;
    std::wstring GetCountryLanguage;
    std::wstring Extra1;
    std::wstring Extra2;
    std::wstring Extra3;
    std::wstring Extra4;
    std::wstring Extra5;

    // --- Settings ----------------------------------------------------------------------------------------------
    void LMSetOverideComputerName(const std::wstring& computerName);
    // Also sets the data path that all modules of the process share. No separator is added.
    void LMSetDataPath(const std::wstring& dataPath);
    // Upper-cased, characters below 32 removed.
    void SetDataKey(const std::wstring& dataKey);
    void SetHomePostCode(const std::wstring& homePostCode) { homePostcode_ = homePostCode; }
    void SetResellerID(std::int32_t resellerId) { resellerId_ = resellerId; }
    void SetServiceURL(const std::wstring& url) { ServerURL = url; }

    const std::wstring& OverrideComputerName() const { return overrideComputerName_; }
    const std::wstring& DataPath() const { return dataPath_; }
    const std::wstring& DataKey() const { return dataKey_; }
    const std::wstring& HomePostcode() const { return homePostcode_; }
    std::int32_t ResellerID() const { return resellerId_; }

    // A data path selects local mode; there is no fall-back from one mode to the other.
    bool LocalMode() const { return !dataPath_.empty(); }
    // A key that begins with "I" is used by several people inside one firm and names the user in its calls.
    bool InternalKey() const { return !dataKey_.empty() && dataKey_.front() == L'I'; }
    // Stores the built-in base address when none is set; returns the address in use.
    const std::wstring& EnsureServerURL();

    // --- State of the lookups ------------------------------------------------------------------------------------
    StoredList AddressData; // records of the last list reply, its walk and the identifiers handed out
    NearestList nearest;

  private:
    // An internal key in local mode is logged under the name that the host set.
    void NameLogUser();

    std::wstring overrideComputerName_;
    std::wstring dataPath_;
    std::wstring dataKey_;
    std::wstring homePostcode_;
    std::int32_t resellerId_ = 0;
};

// "2.4.0": major, minor and revision of the component.
std::wstring GetVersion();

} // namespace quorvex::object
