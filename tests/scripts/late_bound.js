// What a JScript host sees: values only, undefined and null, errors as exceptions.
var checks = 0;

function check(what, got, expected) {
    ++checks;
    if (got !== expected) WScript.Echo("FAIL " + what + ": " + typeof got + " " + got + " instead of " + expected);
}

function errorOf(action) {
    try {
        action();
    } catch (error) {
        var number = error.number & 0xFFFF;
        // Not every host translates Automation's own codes into those of scripts.
        var scripts = { 3: 438, 5: 13, 6: 438, 14: 450 };
        return (error.number >>> 16) === 0x8002 ? scripts[number] : number;
    }
    return 0;
}

var object = new ActiveXObject("QuorvexLookup.Quorvex");
object.ServerURL = "http://127.0.0.1:1";
check("version", object.GetVersion(), "2.4.0");
check("no value is an empty text", object.FormatPostCode(undefined), "");
check("number", object.FormatPostCode(12), "12");
check("true", object.FormatPostCode(true), "True");
object.Extra1 = undefined;
check("empty property", object.Extra1, "");
object.General_confirm = 1;
check("Boolean property", object.General_confirm, true);
object.RecordCount = 5.5;
check("rounded to even", object.RecordCount, 6);
check("null", errorOf(function () { object.FormatPostCode(null); }), 13);
check("too few", errorOf(function () { object.FormatPostCode(); }), 450);
check("too many", errorOf(function () { object.FormatPostCode("a", "b"); }), 450);
check("no number", errorOf(function () { object.GetDistance("north", 0, 0, 0); }), 13);
check("unknown", errorOf(function () { object.NoSuchMember(); }), 438);

// A by-reference argument is given a value only: the text stays, so a loop over it moves on by itself.
var html = "<town>Ely</town><town>March</town>";
check("first town", object.GetBetweenTags("<town>", html, "</town>", 1), "Ely");
check("the text stays", html, "<town>Ely</town><town>March</town>");
check("default", object.GetBetweenTags("<no>", html, "</no>", 0, "none"), "none");
check("one degree", Math.round(object.GetDistance(52, 0, 53, 0) * 100) / 100, 111.19);

// Local mode through properties, which is how such a host reads every answer.
object.LMSetDataPath(WScript.Arguments(0));
check("list", object.GetFullAddressToList("AB1 0DF"), true);
var lines = [], line;
while ((line = object.GetFullAddressLineForSelection()) !== "") lines.push(line);
check("lines", lines.length, object.RecordCount);
check("record", object.GetFullAddressRecord(1), true);
check("town", object.Address_Town, "ABERDEEN");
check("identifier", object.Address_Id, "AB1 0DF_2_F");
check("postcode of the point", object.GetPostZonAddressLongLat(-2.133233, 57.181792, ""), "AB1 0DF");

WScript.Echo("PASS " + checks);
