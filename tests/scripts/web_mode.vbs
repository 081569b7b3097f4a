' A script host in web mode: list, record, street, place, maps, the advanced search and the service's own words.
Option Explicit

Dim checks, object, service
checks = 0

Sub Check(what, got, expected)
    checks = checks + 1
    If CStr(got) <> CStr(expected) Then WScript.Echo "FAIL " & what & ": '" & got & "' instead of '" & expected & "'"
End Sub

service = Replace(CreateObject("WScript.Shell").ExpandEnvironmentStrings("%QUORVEX_SERVICE_URL%"), Chr(0), "") ' some systems hand the end out, too
Set object = CreateObject("QuorvexLookup.Quorvex")
object.SetServiceURL service
object.SetDataKey "demo"
Check "address", object.ServerURL, service

Dim lines
Check "list", object.GetFullAddressToList("AB1 0DF"), True
Check "confirmed", object.General_confirm, True
lines = 0
Do While object.GetFullAddressLineForSelection <> ""
    lines = lines + 1
Loop
Check "lines", lines, object.RecordCount
Check "record", object.GetFullAddressRecord(0), True
Check "town", object.Address_Town, "ABERDEEN"
Check "identifier", object.Address_Id, "AB1 0DF_1_F"
Check "street", object.GetThoroughfareAddressRecord("AB1 0DF"), True
Check "street name", object.Address_Line1, "CLOVER GROVE"
object.SetHomePostCode "AB1 0PA"
Check "place", object.GetPostZonAddressRecord("AB1 0DF"), True
Check "latitude", object.PostZon_Latitude_wgs84, "57.181792"
Check "distance", FormatNumber(object.PostZon_DistanceToHomePostcode, 2), "0.62"
Check "map", InStr(object.GetUrlforPrefuredMapStreet("AB1 0DF"), "57.181792") > 0, True
Check "directory", InStr(object.GetUrlDirectoryOfService("AB1 0DF", "Health"), "Service") > 0, True
Check "unknown", object.GetThoroughfareAddressRecord("XX1 1XX"), False
Check "reason", object.General_errormessage <> "", True

Dim id, kind, text, headings
Check "advanced", object.GetFullAddressToListAdv("", "", "KILN HILL", "ABERDEEN", "", ""), True
headings = 0
lines = 0
Do
    text = object.GetFullAddressLineForSelectionAdv(id, kind)
    If kind = "" Then Exit Do
    If kind = "h" Then headings = headings + 1 Else lines = lines + 1
    If kind = "l" And lines = 1 Then Check "identifier of a line", Right(id, 2), "_F"
Loop
Check "advanced lines", lines, object.RecordCount
Check "headings", headings > 0, True

' The raw reply is a text like any other.
Dim reply
reply = object.GetDataFromHTTPRequest(service & "/xmlservice/SearchForAddress.aspx?datakey=DEMO&postcode=ZZ99&COM=1")
Check "raw reply", object.GetBetweenTags("<recordcount>", reply, "</recordcount>"), "40"
lines = 0
Do While object.GetBetweenTags("<line>", reply, "</line>", 1) <> ""
    lines = lines + 1
Loop
Check "lines of the raw reply", lines, 14

WScript.Echo "PASS " & checks
