' Local mode against the truth of the sample data, read from its tab-separated files.
Option Explicit

Dim checks, failures, object, key, position
checks = 0
failures = 0
key = ""
position = 0

Sub Check(what, got, expected)
    checks = checks + 1
    If got = expected Then Exit Sub
    failures = failures + 1
    If failures <= 20 Then WScript.Echo "FAIL " & what & ": '" & got & "' instead of '" & expected & "'"
End Sub

' Checks every step-th row of a truth file; its first line names the columns.
Sub Walk(name, stepWidth)
    Dim stream, lines, i, before
    before = checks
    Set stream = CreateObject("Scripting.FileSystemObject").OpenTextFile(WScript.Arguments(1) & "\" & name, 1)
    lines = Split(stream.ReadAll, vbLf)
    stream.Close
    For i = 1 To UBound(lines) Step stepWidth
        If lines(i) <> "" Then
            Select Case name
                Case "full.tsv": CheckAddress Split(lines(i), vbTab)
                Case "street.tsv": CheckStreet Split(lines(i), vbTab)
                Case "postzon.tsv": CheckPlace Split(lines(i), vbTab)
                Case "nearest.tsv": CheckNearest Split(lines(i), vbTab)
                Case "filter.tsv": CheckFilter Split(lines(i), vbTab)
                Case "deleted.tsv": CheckDeleted Split(lines(i), vbTab)
            End Select
        End If
    Next
    If checks - before < 10 Then WScript.Echo "FAIL hardly a row in " & name
End Sub

' A display line and its record; rows come in the order of the list.
Sub CheckAddress(field)
    Dim line
    If CLng(field(1)) > 100 Then Exit Sub ' one list does not hand out more records
    If field(0) <> key Then
        key = field(0)
        position = 0
        Check key, object.GetFullAddressToList(key), True
    End If
    Do While position < CLng(field(1))
        line = object.GetFullAddressLineForSelection
        position = position + 1
    Loop
    Check key & " line " & position, line, field(2)
    If position Mod 5 <> 1 Then Exit Sub
    ' A record without a postcode is none.
    Check key & " record " & position, object.GetFullAddressRecord(position - 1), field(9) <> ""
    Check key & " organisation", object.Address_Organisation, field(3)
    Check key & " line1", object.Address_Line1, field(4)
    Check key & " line2", object.Address_Line2, field(5)
    Check key & " line3", object.Address_Line3, field(6)
    Check key & " town", object.Address_Town, field(7)
    Check key & " county", object.Address_County, field(8)
    Check key & " country", object.Address_Country, field(11)
    Check key & " suffix", object.Address_Deliverypointsuffix, field(12)
    Check key & " households", object.Address_NoHouseHolds, field(13)
    Check key & " small organisation", object.Address_Smallorg, field(14)
    Check key & " mailsort", object.Address_Mailsort, field(15)
    Check key & " spare", object.Address_Spare, field(16)
End Sub

Sub CheckStreet(field)
    Check field(0), object.GetThoroughfareAddressRecord(field(0)), field(6) <> ""
    Check field(0) & " line1", object.Address_Line1, field(1)
    Check field(0) & " line2", object.Address_Line2, field(2)
    Check field(0) & " town", object.Address_Town, field(4)
    Check field(0) & " mailsort", object.Address_Mailsort, field(9)
End Sub

Sub CheckPlace(field)
    Check field(0), object.GetPostZonAddressRecord(field(0)), True
    Check field(0) & " east", object.PostZon_Gridrefeast, field(2)
    Check field(0) & " ward", object.PostZon_Ward, field(6)
    Check field(0) & " latitude", object.PostZon_Latitude_wgs84, field(13)
    Check field(0) & " longitude", object.PostZon_Longitude_wgs84, field(14)
    Check field(0) & " reference", object.PostZon_OSreference, field(15)
End Sub

Sub CheckNearest(field)
    Check field(0) & "|" & field(1), object.GetPostZonAddressLongLat(CDbl(field(0)), CDbl(field(1)), ""), field(2)
End Sub

Sub CheckFilter(field)
    Dim asked
    asked = field(0) & ", " & field(1)
    If CLng(field(2)) < 2 Then Check asked, object.GetFullAddressToList(asked), True
    If CLng(field(2)) = 0 Then
        Check "none at " & asked, object.RecordCount, 0
    Else
        Check asked & " line " & field(2), object.GetFullAddressLineForSelection, field(3)
    End If
End Sub

Sub CheckDeleted(field)
    If InStr(field(1), "full") = 0 Then Exit Sub
    object.GetFullAddressToList field(0)
    Check "deleted " & field(0), object.RecordCount, 0
End Sub

Set object = CreateObject("QuorvexLookup.Quorvex")
object.LMSetDataPath WScript.Arguments(0)
Walk "full.tsv", 1
Walk "street.tsv", 3
Walk "postzon.tsv", 3
Walk "nearest.tsv", 1
Walk "filter.tsv", 1
Walk "deleted.tsv", 1

If failures > 0 Then WScript.Echo "FAIL " & failures & " of " & checks
WScript.Echo "PASS " & checks
