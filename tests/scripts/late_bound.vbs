' What a script host may do with the object: arguments of every kind, out values, loops, error numbers.
Option Explicit

Dim checks, object, value, rest, town, towns, i
checks = 0

Function Kind(value)
    Kind = TypeName(value)
    If IsNumeric(value) And Kind <> "String" And Kind <> "Boolean" And Kind <> "Empty" Then Kind = "Number"
End Function

Sub Check(what, got, expected)
    checks = checks + 1
    If Kind(got) = Kind(expected) Then
        If got = expected Then Exit Sub
    End If
    WScript.Echo "FAIL " & what & ": " & TypeName(got) & " " & got & " instead of " & TypeName(expected) & " " & expected
End Sub

Set object = CreateObject("QuorvexLookup.Quorvex")
Check "version", object.GetVersion, "2.4.0"

object.ServerURL = "http://127.0.0.1:1"

' Arguments by value, by variable, by array element, by expression.
Dim list(1)
value = "AB13CD"
list(0) = "SW1A 1AA"
Check "variable", object.FormatPostCode(value), "AB1 3CD"
Check "array element", object.FormatPostCode(list(0)), "SW1A1AA"
Check "expression", object.FormatPostCode("AB1" & "3CD"), "AB1 3CD"
Check "the variable stays", value, "AB13CD"
Dim north, km
north = "52.5"
km = object.GetDistance(north, 0, 53.5, CDbl(0))
Check "one degree north", FormatNumber(km, 2), "111.19"
Check "a pure input keeps its type", TypeName(north), "String"

' GetBetweenTags with its defaults, and eating a text up.
Check "left out in the middle", object.GetBetweenTags("<no>", "<a>1</a>", , , "none"), "none"
rest = "<town>Ely</town><town>March</town><town>Wisbech</town>"
towns = ""
Do
    town = object.GetBetweenTags("<town>", rest, "</town>", 1)
    If town = "" Then Exit Do
    towns = towns & town & ";"
Loop
Check "all towns", towns, "Ely;March;Wisbech;"
Check "nothing is left", rest, ""

' Local mode: lines, records and the nearest list fill variables of a script.
object.LMSetDataPath WScript.Arguments(0)
Check "list", object.GetFullAddressToList("AB1 0DF"), True
Dim lines
lines = 0
Do While object.GetFullAddressLineForSelection <> ""
    lines = lines + 1
Loop
Check "lines", lines, object.RecordCount
For i = 0 To lines - 1
    Check "record " & i, object.GetFullAddressRecord(i), True
    Check "identifier " & i, object.Address_Id, "AB1 0DF_" & (i + 1) & "_F"
Next
Dim longitude, latitude, box, distance, data(2)
Check "nearest list", object.Nearest_StartList("AB1 0DF", "50", longitude, latitude, box), True
Check "longitude", longitude, -2.133233
Check "latitude", latitude, 57.181792
Check "box", FormatNumber(box, 3), "0.455"
Check "added", object.Nearest_AddToList(longitude, latitude, "here", 1, Empty), True
Check "added", object.Nearest_AddToList(-2.2, 57.2, "near", 2, "x"), True
Check "counted", object.Nearest_GetNumberOfRecordsReturned, 2
Check "read", object.Nearest_GetRecord(1, distance, longitude, latitude, data(0), data(1), data(2)), True
Check "distance", distance, 0.0
Check "first text", data(0), "here"
Check "second text", data(1), "1"
Check "third text", data(2), ""
value = "99"
Check "behind the end", object.Nearest_GetRecord(3, value, 0, 0, "", "", ""), False
Check "nothing filled in", value, "99"
object.Nearest_EndList

' Wrong calls end in the errors that scripts know.
On Error Resume Next
Sub CheckError(what, number)
    checks = checks + 1
    If Err.Number <> number Then WScript.Echo "FAIL " & what & ": error " & Err.Number & " instead of " & number
    Err.Clear
End Sub
value = object.FormatPostCode(Null)
CheckError "Null", 13
value = object.GetDistance("north", 0, 0, 0)
CheckError "no number", 13
value = object.FormatPostCode()
CheckError "too few", 450
object.SetResellerID 99999999999
CheckError "overflow", 6
object.NoSuchMember
CheckError "unknown member", 438
object.RecordCount = "many"
CheckError "property", 13
On Error Goto 0

WScript.Echo "PASS " & checks
