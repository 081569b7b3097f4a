#pragma once

#include "object/quorvex.h"
#include "server/data_engine_win.h"
#include "server/module_win.h"
#include "server/platform_win.h"
#include "server/shared_dispatcher_win.h"
#include "server/text_arguments_win.h"
#include "support/floating_point.h"

#include <windows.h>

#include <oleauto.h>
#include <quorvex_com.h>

#include <optional>
#include <type_traits>

namespace quorvex::server {

// Automation wants a get and a put method for every property.
#define QUORVEX_PROPERTY(type, name)                                                                                   \
    HRESULT STDMETHODCALLTYPE get_##name(type* value) override;                                                        \
    HRESULT STDMETHODCALLTYPE put_##name(type value) override;
#define QUORVEX_TEXT(number, name, help) QUORVEX_PROPERTY(BSTR, name)
#define QUORVEX_BOOLEAN(number, name, help) QUORVEX_PROPERTY(VARIANT_BOOL, name)
#define QUORVEX_LONG(number, name, help) QUORVEX_PROPERTY(long, name)
#define QUORVEX_SHORT(number, name, help) QUORVEX_PROPERTY(short, name)

// The creatable lookup object as hosts see it: converts arguments, calls the room that owns the method, and lets no
// exception out. A method that fails inside gives its failure value and a line in the error log.
class QuorvexObject final : public _Quorvex {
  public:
    QuorvexObject();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID iid, LCID locale, WORD flags, DISPPARAMS* params,
                                     VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override;

#include "server/quorvex_properties.inc"

    HRESULT STDMETHODCALLTYPE LMSetOverideComputerName(BSTR* ComputerName) override;
    HRESULT STDMETHODCALLTYPE LMSetDataPath(BSTR* DataPath) override;
    HRESULT STDMETHODCALLTYPE SetDataKey(BSTR* DataKey) override;
    HRESULT STDMETHODCALLTYPE GetVersion(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE SetHomePostCode(BSTR* HomePostCode) override;
    HRESULT STDMETHODCALLTYPE SetResellerID(long* ResellerID) override;
    HRESULT STDMETHODCALLTYPE SearchForFullAddressWithDialogue(BSTR* PostcodePrima, BSTR* Caption,
                                                               VARIANT_BOOL* ShowAccountDetails,
                                                               VARIANT_BOOL* AllowManageAccount,
                                                               VARIANT_BOOL* DisplayErrors,
                                                               VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE SearchForFullAddressWithDialogueAdv(BSTR* PostcodePrima, BSTR* Caption, BSTR* path,
                                                                  VARIANT_BOOL* ShowAccountDetails,
                                                                  VARIANT_BOOL* AllowManageAccount,
                                                                  VARIANT_BOOL* DisplayErrors,
                                                                  VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetThoroughfareAddressRecord(BSTR* Postcode, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetFullAddressToList(BSTR* Postcode, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetFullAddressToListAdv(BSTR* company, BSTR* house, BSTR* street, BSTR* town,
                                                      BSTR* county, BSTR* postcodearea, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetFullAddressLineForSelectionAdv(BSTR* id, BSTR* LineType, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE GetFullAddressLineForSelection(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE GetFullAddressRecord(long* SelectedListIndex, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetFullAddressRecordByAddressID(BSTR* AddressID, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetPostZonAddressLongLat(double TargetLongitude, double TargetLatitude,
                                                       BSTR RawHomePostCode, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE GetPostZonAddressRecord(BSTR* Postcode, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE ShowAccountAdminPage() override;
    HRESULT STDMETHODCALLTYPE OpenAnAccountAndLinkToResellerForInternalUse() override;
    HRESULT STDMETHODCALLTYPE OpenAnAccountAndLinkToResellerForWebUse() override;
    HRESULT STDMETHODCALLTYPE OpenAnAccountAndLinkToResellerForWebAndInternalUse() override;
    HRESULT STDMETHODCALLTYPE GetUrlDirectoryOfService(BSTR* PostcodeOrTown, BSTR* KeyWords, BSTR* TypeOfService,
                                                       BSTR* result) override;
    HRESULT STDMETHODCALLTYPE DisplayDirectoryOfService(BSTR* PostcodeOrTown, BSTR* KeyWords, BSTR* TypeOfService,
                                                        BSTR* result) override;
    HRESULT STDMETHODCALLTYPE GetUrlforPrefuredMapArea(BSTR* Postcode, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE GetUrlforPrefuredMapStreet(BSTR* Postcode, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE GetUrlforPrefuredMapDistrict(BSTR* Postcode, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE DisplayPrefuredMapArea(BSTR* Postcode, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE DisplayPrefuredMapStreet(BSTR* Postcode, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE DisplayPrefuredMapDistrict(BSTR* Postcode, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE GetBetweenTags(BSTR* AttributeName, BSTR* html, BSTR* ToEndChr, short* ConsumeHTMLBefore,
                                             BSTR* DefaultValue, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE DisplayWebPage(BSTR* URL, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetDataFromHTTPRequest(BSTR* URL, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE GetComputerName(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE FormatPostCode(BSTR Postcode, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE LMUpdateData(VARIANT_BOOL* InternetIsAvailable, BSTR* Title,
                                           VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetDistance(double* Latitude1, double* Longtitude1, double* Latitude2,
                                          double* Longtitude2, double* result) override;
    HRESULT STDMETHODCALLTYPE LMGetLastUpdateDate(BSTR* DataType, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE Nearest_StartList(BSTR* TargetPostcode, double* WithInKm, double* Longtitude,
                                                double* Latitude, double* Difference, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE Nearest_AddToList(double* Longtitude, double* Latitude, BSTR* YouData1, BSTR* YouData2,
                                                BSTR* YouData3, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE Nearest_GetNumberOfRecordsReturned(long* result) override;
    HRESULT STDMETHODCALLTYPE Nearest_GetRecord(long* x, double* distance, double* Longtitude, double* Latitude,
                                                BSTR* YouData1, BSTR* YouData2, BSTR* YouData3,
                                                VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE Nearest_EndList() override;
    HRESULT STDMETHODCALLTYPE SetServiceURL(BSTR* URL) override;

  private:
    ~QuorvexObject() = default;

    // Puts the value of a property into result; nothing for any other member.
    std::optional<HRESULT> GetProperty(DISPID member, VARIANT* result);

    // Runs a method body; what it throws ends in the error log. The object lives at least as long as the body runs.
    template <typename Body>
    HRESULT Guard(Body body) noexcept {
        const support::DefaultArithmetic arithmetic;
        AddRef();
        HRESULT hr = S_OK;
        try {
            body();
        } catch (...) {
            hr = LogPendingError();
        }
        Release();
        return hr;
    }
    // Runs a method with an answer: false, empty or 0 until the body has returned one. A body without a value leaves
    // it.
    template <typename Result, typename Body>
    HRESULT Answer(Result* result, Body body) noexcept {
        if (result == nullptr) return E_POINTER;
        *result = {};
        return Guard([&] {
            if constexpr (std::is_void_v<decltype(body())>) {
                body();
            } else {
                Give(result, body());
            }
        });
    }
    // What every failed body comes to: a line in the error log and, but for lack of memory, success with the failure
    // value.
    HRESULT LogPendingError() noexcept;

    // The six map methods differ in the page only.
    using MapFunction = std::wstring (*)(object::Quorvex&, const std::wstring&);
    HRESULT MapPage(MapFunction page, BSTR* postcode, BSTR* result);

    ModuleReference module_;
    SharedDispatcher dispatcher_;
    LONG references_ = 1;
    DataEngine engine_;
    WindowsPlatform platform_;
    object::Quorvex lookup_{platform_.Surroundings(), engine_};
};

#undef QUORVEX_TEXT
#undef QUORVEX_BOOLEAN
#undef QUORVEX_LONG
#undef QUORVEX_SHORT
#undef QUORVEX_PROPERTY

} // namespace quorvex::server
