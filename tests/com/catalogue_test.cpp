// The type library that hosts compile against: names, order, numbers, types and defaults are a promise to every host.
#include "com/catalogue.h"
#include "com/host.h"
#include "testing/truth.h"

#include <algorithm>

namespace quorvex::testing {
namespace {

// In interface order, which is the order of the numbers from 1; texts where nothing else is said.
constexpr wchar_t kProperties[] =
    L"ServerURL, General_Pop_Message, General_LookupListVersion, boolean General_confirm, "
    L"General_credits_display_text, General_accountadminpage, General_errormessage, "
    L"boolean General_credits_display_showbutton, long RecordCount, PostZon_postcode, Address_Id, "
    L"Address_Organisation, Address_Line1, Address_Line2, Address_Line3, Address_Town, Address_County, "
    L"Address_Postcode, Address_Country, Address_Deliverypointsuffix, Address_NoHouseHolds, Address_Smallorg, "
    L"Address_PoBox, Address_Rawpostcode, Address_Mailsort, Address_Unique, Address_UDPRN, Address_Spare, "
    L"PostZon_IntroductionDate, PostZon_Gridrefeast, PostZon_Gridrefnorth, PostZon_County, PostZon_District, "
    L"PostZon_Ward, PostZon_Usertype, PostZon_Gridstatus, PostZon_Country, PostZon_Wardstatus, PostZon_NHS_code, "
    L"PostZon_NHS_region, PostZon_Latitude_wgs84, PostZon_Longitude_wgs84, PostZon_OSreference, "
    L"PostZon_DistanceToHomePostcode, short ShowHTTPcallsInDetailFlg, ExtraParms, GetCountryData, "
    L"GetCountryLanguage, Extra1, Extra2, Extra3, Extra4, Extra5";

// In interface order, numbered from 101.
constexpr const wchar_t* kMethods[] = {
    L"none LMSetOverideComputerName(text& ComputerName)",
    L"none LMSetDataPath(text& DataPath)",
    L"none SetDataKey(text& DataKey)",
    L"variant GetVersion()",
    L"none SetHomePostCode(text& HomePostCode)",
    L"none SetResellerID(long& ResellerID)",
    L"boolean SearchForFullAddressWithDialogue(text& PostcodePrima, text& Caption, boolean& ShowAccountDetails, "
    L"boolean& AllowManageAccount, boolean& DisplayErrors)",
    L"boolean SearchForFullAddressWithDialogueAdv(text& PostcodePrima, text& Caption, text& path, "
    L"boolean& ShowAccountDetails, boolean& AllowManageAccount, boolean& DisplayErrors)",
    L"boolean GetThoroughfareAddressRecord(text& Postcode)",
    L"boolean GetFullAddressToList(text& Postcode)",
    L"boolean GetFullAddressToListAdv(text& company, text& house, text& street, text& town, text& county, "
    L"text& postcodearea)",
    L"text GetFullAddressLineForSelectionAdv(text& id, text& LineType)",
    L"text GetFullAddressLineForSelection()",
    L"boolean GetFullAddressRecord(long& SelectedListIndex)",
    L"boolean GetFullAddressRecordByAddressID(text& AddressID)",
    L"text GetPostZonAddressLongLat(double TargetLongitude, double TargetLatitude, text RawHomePostCode)",
    L"boolean GetPostZonAddressRecord(text& Postcode)",
    L"none ShowAccountAdminPage()",
    L"none OpenAnAccountAndLinkToResellerForInternalUse()",
    L"none OpenAnAccountAndLinkToResellerForWebUse()",
    L"none OpenAnAccountAndLinkToResellerForWebAndInternalUse()",
    L"text GetUrlDirectoryOfService(text& PostcodeOrTown, text& KeyWords, [text& TypeOfService='Service'])",
    L"text DisplayDirectoryOfService(text& PostcodeOrTown, text& KeyWords, [text& TypeOfService='Service'])",
    L"text GetUrlforPrefuredMapArea(text& Postcode)",
    L"text GetUrlforPrefuredMapStreet(text& Postcode)",
    L"text GetUrlforPrefuredMapDistrict(text& Postcode)",
    L"text DisplayPrefuredMapArea(text& Postcode)",
    L"text DisplayPrefuredMapStreet(text& Postcode)",
    L"text DisplayPrefuredMapDistrict(text& Postcode)",
    L"text GetBetweenTags(text& AttributeName, text& html, [text& ToEndChr='\"'], [short& ConsumeHTMLBefore=0], "
    L"[text& DefaultValue=''])",
    L"variant DisplayWebPage(text& URL)",
    L"text GetDataFromHTTPRequest(text& URL)",
    L"text GetComputerName()",
    L"text FormatPostCode(text Postcode)",
    L"boolean LMUpdateData(boolean& InternetIsAvailable, text& Title)",
    L"double GetDistance(double& Latitude1, double& Longtitude1, double& Latitude2, double& Longtitude2)",
    L"text LMGetLastUpdateDate(text& DataType)",
    L"boolean Nearest_StartList(text& TargetPostcode, double& WithInKm, double& Longtitude, double& Latitude, "
    L"double& Difference)",
    L"boolean Nearest_AddToList(double& Longtitude, double& Latitude, text& YouData1, text& YouData2, text& YouData3)",
    L"long Nearest_GetNumberOfRecordsReturned()",
    L"boolean Nearest_GetRecord(long& x, double& distance, double& Longtitude, double& Latitude, text& YouData1, "
    L"text& YouData2, text& YouData3)",
    L"none Nearest_EndList()",
    L"none SetServiceURL(text& URL)",
};

std::vector<std::wstring> Expected() {
    std::vector<std::wstring> expected;
    int number = 0;
    for (const std::wstring& property : Items(kProperties)) {
        const std::wstring id = std::to_wstring(++number);
        const std::size_t blank = property.find(L' ');
        const std::wstring type = blank == std::wstring::npos ? L"text" : property.substr(0, blank);
        const std::wstring name = property.substr(blank + 1);
        expected.push_back(id + L" get " + type + L" " + name + L"()");
        expected.push_back(id + L" put none " + name + L"(" + type + L" value)");
    }
    number = 100;
    for (const std::wstring method : kMethods) expected.push_back(std::to_wstring(++number) + L" " + method);
    return expected;
}

using CatalogueTest = ComTest;

TEST_F(CatalogueTest, EveryMemberIsThereInInterfaceOrder) {
    const std::vector<Member> members = Catalogue(object_.get());
    const std::vector<std::wstring> expected = Expected();
    ASSERT_EQ(members.size(), expected.size());
    const auto pointer = static_cast<short>(sizeof(void*));
    for (std::size_t i = 0; i < members.size(); ++i) {
        EXPECT_EQ(support::ToUtf8(Signature(members[i])), support::ToUtf8(expected[i]));
        // The vtable continues behind the seven slots of IDispatch.
        EXPECT_EQ(members[i].vtableOffset, static_cast<short>(7 + i) * pointer) << expected[i];
    }
}

TEST_F(CatalogueTest, EveryMemberSaysWhatItIsForAndWhichWayArgumentsGo) {
    for (const Member& member : Catalogue(object_.get())) {
        EXPECT_GE(member.help.size(), 5U) << member.name;
        for (const Parameter& parameter : member.parameters) {
            const USHORT way = parameter.flags & (PARAMFLAG_FIN | PARAMFLAG_FOUT);
            const USHORT both = PARAMFLAG_FIN | PARAMFLAG_FOUT;
            EXPECT_EQ(way, parameter.byReference ? both : PARAMFLAG_FIN) << member.name << " " << parameter.name;
        }
    }
}

TEST_F(CatalogueTest, TheLibraryNamesItselfAndItsClass) {
    ITypeInfo* loaded = nullptr;
    ASSERT_EQ(object_->GetTypeInfo(0, 0, &loaded), S_OK);
    const Ptr<ITypeInfo> info(loaded);
    ITypeLib* containing = nullptr;
    UINT index = 0;
    ASSERT_EQ(info->GetContainingTypeLib(&containing, &index), S_OK);
    const Ptr<ITypeLib> library(containing);

    ASSERT_EQ(library->GetTypeInfoCount(), 2U);
    const std::pair<GUID, const wchar_t*> types[] = {{IID__Quorvex, L"_Quorvex"}, {CLSID_Quorvex, L"Quorvex"}};
    for (const auto& [id, name] : types) {
        ITypeInfo* found = nullptr;
        ASSERT_EQ(library->GetTypeInfoOfGuid(id, &found), S_OK) << name;
        const Ptr<ITypeInfo> type(found);
        Text actual, help;
        type->GetDocumentation(MEMBERID_NIL, actual.Out(), help.Out(), nullptr, nullptr);
        EXPECT_EQ(actual.Str(), name);
        EXPECT_FALSE(help.Str().empty()) << name;
        TYPEATTR* traits = nullptr;
        ASSERT_EQ(type->GetTypeAttr(&traits), S_OK);
        if (traits->typekind == TKIND_COCLASS) {
            EXPECT_NE(traits->wTypeFlags & TYPEFLAG_FCANCREATE, 0);
            int flags = 0;
            EXPECT_EQ(type->GetImplTypeFlags(0, &flags), S_OK);
            EXPECT_NE(flags & IMPLTYPEFLAG_FDEFAULT, 0);
        } else {
            EXPECT_NE(traits->wTypeFlags & TYPEFLAG_FDUAL, 0);
        }
        type->ReleaseTypeAttr(traits);
    }
    Text name, help;
    library->GetDocumentation(-1, name.Out(), help.Out(), nullptr, nullptr);
    EXPECT_EQ(name.Str(), L"QuorvexLookup");
    EXPECT_FALSE(help.Str().empty());
}

TEST_F(CatalogueTest, NamesAreFoundInAnyCaseAndUnknownOnesAreRefused) {
    EXPECT_EQ(Call(object_.get(), L"formatpostcode", {L"AB13CD"}).result.Str(), L"AB1 3CD");
    EXPECT_EQ(Call(object_.get(), L"NoSuchMember", {}).hr, DISP_E_UNKNOWNNAME);
    DISPPARAMS none{};
    EXPECT_EQ(object_->Invoke(9999, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(object_->Invoke(104, IID_NULL, 0, DISPATCH_PROPERTYPUT, &none, nullptr, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(object_->Invoke(104, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr), E_INVALIDARG);
    UINT count = 0;
    EXPECT_EQ(object_->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    ITypeInfo* info = nullptr;
    EXPECT_EQ(object_->GetTypeInfo(1, 0, &info), DISP_E_BADINDEX);
}

} // namespace
} // namespace quorvex::testing
