// Late-bound calls: what hosts may pass, what comes back into their variables, and how wrong calls end.
#include "com/host.h"

#include <cmath>

namespace quorvex::testing {
namespace {

using CoercionTest = ComTest;

constexpr wchar_t kTown[] = L"<town>";
constexpr wchar_t kTownEnd[] = L"</town>";
constexpr wchar_t kTwoTowns[] = L"<town>Ely</town><town>March</town>";

TEST_F(CoercionTest, NumbersMayComeInAnyConvertibleFormAndWay) {
    double expected = 0;
    double lat1 = 52.5, long1 = -1, lat2 = 53, long2 = 2;
    ASSERT_EQ(object_->GetDistance(&lat1, &long1, &lat2, &long2, &expected), S_OK);
    ASSERT_GT(expected, 100);

    Value text(L"52.5"), whole(-1L), single = Value::OfType(VT_R4), decimal, byte = Value::OfType(VT_UI1);
    single.fltVal = 53;
    VarDecFromR8(2, &decimal.decVal);
    decimal.vt = VT_DECIMAL;
    byte.bVal = 2;
    float float53 = 53;
    short short2 = 2;
    long minusOne = -1;
    BSTR rawText = text.bstrVal;
    Value inner = Value::Ref(text);
    const std::vector<std::vector<Value>> ways = {
        {52.5, -1L, 53.0, 2L},
        {L"52.5", L"-1", L"53", L"2"},
        {Value::Ref(text), Value::Ref(whole), Value::Ref(single), Value::Ref(decimal)},
        {Value::Ref(inner), whole, single, Value::Ref(byte)},
        {Value::Borrowed(VT_BYREF | VT_R8, &lat1), Value::Borrowed(VT_BYREF | VT_I4, &minusOne),
         Value::Borrowed(VT_BYREF | VT_R4, &float53), Value::Borrowed(VT_BYREF | VT_I2, &short2)},
        {Value::Borrowed(VT_BYREF | VT_BSTR, &rawText), true, Value::Ref(single), decimal},
    };
    for (std::size_t i = 0; i < ways.size(); ++i) {
        const Outcome outcome = Call(object_.get(), L"GetDistance", ways[i]);
        EXPECT_EQ(outcome.hr, S_OK) << i;
        EXPECT_EQ(outcome.result.vt, VT_R8) << i;
        EXPECT_EQ(outcome.result.dblVal, expected) << i;
    }
    // What only went in keeps value and type.
    EXPECT_EQ(text.Str(), L"52.5");
    EXPECT_EQ(whole.vt, VT_I4);
    EXPECT_EQ(single.vt, VT_R4);
    EXPECT_EQ(decimal.vt, VT_DECIMAL);
    EXPECT_EQ(byte.vt, VT_UI1);
    EXPECT_EQ(float53, 53);
}

TEST_F(CoercionTest, TextsMayComeInAnyConvertibleForm) {
    Value number(12345L), empty, date = Value::OfType(VT_DATE);
    const std::pair<Value, const wchar_t*> cases[] = {
        {L"AB13CD", L"AB1 3CD"},       {number, L"12345"}, {Value::Ref(number), L"12345"}, {Value::Ref(empty), L""},
        {Value::OfType(VT_BSTR), L""}, {1.5, L"1.5"},
    };
    for (const auto& [argument, expected] : cases) {
        const Outcome outcome = Call(object_.get(), L"FormatPostCode", {argument});
        EXPECT_EQ(outcome.hr, S_OK) << expected;
        EXPECT_EQ(outcome.result.Str(), expected);
    }
    EXPECT_EQ(Call(object_.get(), L"FormatPostCode", {date}).hr, S_OK);
    EXPECT_EQ(number.vt, VT_I4);
    EXPECT_EQ(empty.vt, VT_EMPTY);
}

TEST_F(CoercionTest, OptionalArgumentsMayBeLeftOutSkippedOrNamed) {
    _Quorvex* const object = object_.get();
    const auto value = [&](const std::vector<Value>& positional, const std::vector<Named>& named = {}) {
        const Outcome outcome = Call(object, L"GetBetweenTags", positional, named);
        EXPECT_EQ(outcome.hr, S_OK);
        return outcome.result.Str();
    };
    EXPECT_EQ(value({L"href=\"", L"<a href=\"x.htm\">"}), L"x.htm");
    EXPECT_EQ(value({kTown, kTwoTowns, kTownEnd}), L"Ely");
    EXPECT_EQ(value({L"<no>", kTwoTowns, kTownEnd, Value::Missing(), L"none"}), L"none");
    EXPECT_EQ(value({L"href=\"", L"<a href=\"x.htm\">", Value::Missing(), Value::Missing()}), L"x.htm");
    EXPECT_EQ(value({L"<no>", kTwoTowns}, {{L"DefaultValue", L"none"}}), L"none");
    EXPECT_EQ(value({}, {{L"html", kTwoTowns}, {L"ToEndChr", kTownEnd}, {L"AttributeName", kTown}}), L"Ely");
    Value skipped = Value::Missing(); // as a script's optional parameter handed on
    EXPECT_EQ(value({L"href=\"", L"<a href=\"x.htm\">", Value::Ref(skipped)}), L"x.htm");
    EXPECT_EQ(skipped.vt, VT_ERROR);

    // Compiled hosts leave out by a null pointer.
    Text start(L"href=\""), html(L"<a href=\"x.htm\">"), result;
    EXPECT_EQ(object->GetBetweenTags(start.Ref(), html.Ref(), nullptr, nullptr, nullptr, result.Out()), S_OK);
    EXPECT_EQ(result.Str(), L"x.htm");
}

TEST_F(CoercionTest, AChangedArgumentComesBackInTheVariableThatWasPassed) {
    const std::wstring rest = L"<town>March</town>";
    const auto consume = [&](const Value& html) {
        const Outcome outcome = Call(object_.get(), L"GetBetweenTags", {kTown, html, kTownEnd, 1L});
        EXPECT_EQ(outcome.hr, S_OK);
        EXPECT_EQ(outcome.result.Str(), L"Ely");
    };
    Value variable(kTwoTowns);
    consume(Value::Ref(variable));
    EXPECT_EQ(variable.Str(), rest);

    Value inner(kTwoTowns), outer = Value::Ref(inner);
    consume(Value::Ref(outer));
    EXPECT_EQ(inner.Str(), rest);
    EXPECT_EQ(outer.vt, VT_BYREF | VT_VARIANT);

    Text raw(kTwoTowns);
    consume(Value::Borrowed(VT_BYREF | VT_BSTR, raw.Ref()));
    EXPECT_EQ(raw.Str(), rest);

    Text behind(kTwoTowns);
    Value pointing = Value::Borrowed(VT_BYREF | VT_BSTR, behind.Ref());
    consume(Value::Ref(pointing));
    EXPECT_EQ(behind.Str(), rest);

    consume(kTwoTowns); // a literal has nowhere to go to

    Value untouched(kTwoTowns), number(7L);
    EXPECT_EQ(
        Call(object_.get(), L"GetBetweenTags", {kTown, Value::Ref(untouched), kTownEnd, 0L, Value::Ref(number)}).hr,
        S_OK);
    EXPECT_EQ(untouched.Str(), kTwoTowns);
    EXPECT_EQ(number.vt, VT_I4);
}

TEST_F(CoercionTest, OutValuesFillVariablesOfEveryKind) {
    UseSample(object_.get());
    _Quorvex* const object = object_.get();
    Value longitude, latitude, difference(L"");
    const auto start = [&] {
        return Call(object, L"Nearest_StartList",
                    {L"AB1 0DF", 50L, Value::Ref(longitude), Value::Ref(latitude), Value::Ref(difference)});
    };
    ASSERT_EQ(start().hr, DISP_E_TYPEMISMATCH); // an empty text is no number
    difference = Value(0L);
    ASSERT_EQ(start().result.boolVal, VARIANT_TRUE);
    EXPECT_EQ(longitude.vt, VT_R8);
    EXPECT_EQ(longitude.dblVal, -2.133233);
    EXPECT_EQ(latitude.dblVal, 57.181792);
    EXPECT_NEAR(difference.dblVal, 0.455, 1e-12);

    // The start point itself: distance 0, which must arrive in a variable that held nothing.
    ASSERT_EQ(
        Call(object, L"Nearest_AddToList", {Value::Ref(longitude), Value::Ref(latitude), L"Head office", 12L, L""}).hr,
        S_OK);
    ASSERT_EQ(Call(object, L"Nearest_GetNumberOfRecordsReturned", {}).result.lVal, 1);

    Value distance, data3;
    float singleLongitude = 0;
    DECIMAL latitudeDecimal{};
    Text data1(L"old");
    long data2 = 0;
    const Outcome outcome = Call(object, L"Nearest_GetRecord",
                                 {1L, Value::Ref(distance), Value::Borrowed(VT_BYREF | VT_R4, &singleLongitude),
                                  Value::Borrowed(VT_BYREF | VT_DECIMAL, &latitudeDecimal),
                                  Value::Borrowed(VT_BYREF | VT_BSTR, data1.Ref()),
                                  Value::Borrowed(VT_BYREF | VT_I4, &data2), Value::Ref(data3)});
    ASSERT_EQ(outcome.hr, S_OK);
    EXPECT_EQ(distance.vt, VT_R8);
    EXPECT_EQ(distance.dblVal, 0);
    EXPECT_EQ(singleLongitude, -2.133233F);
    double back = 0;
    EXPECT_EQ(VarR8FromDec(&latitudeDecimal, &back), S_OK);
    EXPECT_EQ(back, 57.181792);
    EXPECT_EQ(data1.Str(), L"Head office");
    EXPECT_EQ(data2, 12);
    EXPECT_EQ(data3.vt, VT_BSTR);
}

TEST_F(CoercionTest, WrongCallsEndInTheirAutomationErrors) {
    _Quorvex* const object = object_.get();
    Value array = Value::OfType(VT_EMPTY);
    array.parray = SafeArrayCreateVector(VT_VARIANT, 0, 3);
    array.vt = VT_ARRAY | VT_VARIANT;
    Value self = Value::OfType(VT_DISPATCH);
    self.pdispVal = object;
    object->AddRef();
    const Value null = Value::OfType(VT_NULL);
    const struct {
        const wchar_t* name;
        std::vector<Value> arguments;
        HRESULT expected;
        UINT badArgument; // counted from the last; 99: not told
    } cases[] = {
        {L"FormatPostCode", {}, DISP_E_BADPARAMCOUNT, 99},
        {L"FormatPostCode", {L"a", L"b"}, DISP_E_BADPARAMCOUNT, 99},
        {L"FormatPostCode", {Value::Missing()}, DISP_E_PARAMNOTOPTIONAL, 99},
        {L"FormatPostCode", {null}, DISP_E_TYPEMISMATCH, 0},
        {L"FormatPostCode", {array}, DISP_E_TYPEMISMATCH, 0},
        {L"GetDistance", {1.0, 2.0, L"north", 4.0}, DISP_E_TYPEMISMATCH, 1},
        {L"GetDistance", {1.0, null, 3.0, 4.0}, DISP_E_TYPEMISMATCH, 2},
        {L"GetDistance", {1.0, 2.0, 3.0}, DISP_E_BADPARAMCOUNT, 99},
        {L"SetResellerID", {L"99999999999"}, DISP_E_OVERFLOW, 0},
        {L"SetResellerID", {1e300}, DISP_E_OVERFLOW, 0},
        {L"GetVersion", {1L}, DISP_E_BADPARAMCOUNT, 99},
        {L"Nearest_EndList", {1L}, DISP_E_BADPARAMCOUNT, 99},
    };
    for (const auto& wrong : cases) {
        const Outcome outcome = Call(object, wrong.name, wrong.arguments);
        EXPECT_EQ(outcome.hr, wrong.expected) << wrong.name << " " << wrong.arguments.size();
        EXPECT_EQ(outcome.result.vt, VT_EMPTY) << wrong.name;
        if (wrong.badArgument != 99) {
            EXPECT_EQ(outcome.badArgument, wrong.badArgument) << wrong.name;
        }
    }
    EXPECT_TRUE(FAILED(Call(object, L"FormatPostCode", {self}).hr)); // an object without a value of its own
    EXPECT_EQ(Call(object, L"FormatPostCode", {L"a"}, {{L"Postcode", L"b"}}).hr, DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(Call(object, L"FormatPostCode", {}, {{L"Nothing", L"b"}}).hr, DISP_E_UNKNOWNNAME);
    EXPECT_EQ(Call(object, L"ServerURL", {1L}, {}, DISPATCH_PROPERTYGET).hr, DISP_E_BADPARAMCOUNT);

    // A wrong call changes nothing of what was passed by reference.
    Value html(kTwoTowns);
    EXPECT_EQ(Call(object, L"GetBetweenTags", {kTown, Value::Ref(html), kTownEnd, L"yes"}).hr, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(html.Str(), kTwoTowns);
}

TEST_F(CoercionTest, PropertiesTakeConvertibleValuesAndRefuseOthers) {
    _Quorvex* const object = object_.get();
    Value number(12L), text(L"34");
    EXPECT_EQ(Put(object, L"ServerURL", number), S_OK);
    EXPECT_EQ(Get(object, L"ServerURL").result.Str(), L"12");
    EXPECT_EQ(Put(object, L"RecordCount", Value::Ref(text)), S_OK);
    EXPECT_EQ(Get(object, L"RecordCount").result.lVal, 34);
    EXPECT_EQ(Put(object, L"General_confirm", L"True"), S_OK);
    EXPECT_EQ(Get(object, L"General_confirm").result.boolVal, VARIANT_TRUE);
    EXPECT_EQ(Put(object, L"General_confirm", 0L), S_OK);
    EXPECT_EQ(Get(object, L"General_confirm").result.boolVal, VARIANT_FALSE);
    EXPECT_EQ(Put(object, L"ShowHTTPcallsInDetailFlg", 70000L), DISP_E_OVERFLOW);
    EXPECT_EQ(Put(object, L"RecordCount", Value::OfType(VT_NULL)), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Get(object, L"RecordCount").result.lVal, 34);
    EXPECT_EQ(Get(object, L"RecordCount").result.vt, VT_I4);
}

} // namespace
} // namespace quorvex::testing
