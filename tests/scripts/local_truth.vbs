' Local mode against the truth of the sample data, read from its tab-separated files.
Option Explicit

Dim checks, failures, object, truth
checks = 0
failures = 0

Sub Check(what, got, expected)
    checks = checks + 1
    If got = expected Then Exit Sub
    failures = failures + 1
    If failures <= 20 Then WScript.Echo "FAIL " & what & ": '" & got & "' instead of '" & expected & "'"
End Sub

' The lines of a truth file less the first, every step-th of them.
Function Rows(name, stepWidth)
    Dim stream, all, picked, i
    Set stream = CreateObject("Scripting.FileSystemObject").OpenTextFile(truth & "\" & name, 1)
    all = Split(stream.ReadAll, vbLf)
    stream.Close
    picked = ""
    For i = 1 To UBound(all) Step stepWidth
        ' The file system object reads the system's code page: rows beyond it are left to other tests.
        If all(i) <> "" And Plain(all(i)) Then picked = picked & vbLf & all(i)
    Next
    Rows = Split(Mid(picked, 2), vbLf)
    If UBound(Rows) < 10 Then WScript.Echo "FAIL no rows in " & name
End Function

Function Plain(text)
    Dim i
    Plain = False
    For i = 1 To Len(text)
        If Asc(Mid(text, i, 1)) > 126 Or Asc(Mid(text, i, 1)) < 0 Then Exit Function
    Next
    Plain = True
End Function

Set object = CreateObject("QuorvexLookup.Quorvex")
object.LMSetDataPath WScript.Arguments(0)
truth = WScript.Arguments(1)

' Every display line with its record, up to what one list can hand out.
Dim row, field, key, position, line
key = ""
For Each row In Rows("full.tsv", 1)
    field = Split(row, vbTab)
    If CLng(field(1)) <= 100 Then
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
        If position Mod 5 = 1 Then
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
        End If
    End If
Next

For Each row In Rows("street.tsv", 3)
    field = Split(row, vbTab)
    If field(6) <> "" Then ' a record without a postcode is none
        Check field(0), object.GetThoroughfareAddressRecord(field(0)), True
        Check field(0) & " line1", object.Address_Line1, field(1)
        Check field(0) & " line2", object.Address_Line2, field(2)
        Check field(0) & " town", object.Address_Town, field(4)
        Check field(0) & " mailsort", object.Address_Mailsort, field(9)
    End If
Next

For Each row In Rows("postzon.tsv", 3)
    field = Split(row, vbTab)
    Check field(0), object.GetPostZonAddressRecord(field(0)), True
    Check field(0) & " east", object.PostZon_Gridrefeast, field(2)
    Check field(0) & " ward", object.PostZon_Ward, field(6)
    Check field(0) & " latitude", object.PostZon_Latitude_wgs84, field(13)
    Check field(0) & " longitude", object.PostZon_Longitude_wgs84, field(14)
    Check field(0) & " reference", object.PostZon_OSreference, field(15)
Next

For Each row In Rows("nearest.tsv", 1)
    field = Split(row, vbTab)
    Check "nearest to " & field(0) & "|" & field(1), object.GetPostZonAddressLongLat(CDbl(field(0)), CDbl(field(1)), ""), field(2)
Next

For Each row In Rows("filter.tsv", 1)
    field = Split(row, vbTab)
    If CLng(field(2)) < 2 Then
        Check field(0) & ", " & field(1), object.GetFullAddressToList(field(0) & ", " & field(1)), True
        position = 0
    End If
    If CLng(field(2)) = 0 Then
        Check "none at " & field(0) & ", " & field(1), object.RecordCount, 0
    Else
        Check field(0) & ", " & field(1) & " line " & field(2), object.GetFullAddressLineForSelection, field(3)
    End If
Next

For Each row In Rows("deleted.tsv", 1)
    field = Split(row, vbTab)
    object.GetFullAddressToList field(0)
    If InStr(field(1), "full") > 0 Then Check "deleted " & field(0), object.RecordCount, 0
Next

If failures > 0 Then WScript.Echo "FAIL " & failures & " of " & checks
WScript.Echo "PASS " & checks
