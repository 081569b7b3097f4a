' Brings a data folder up to date and shows what changed: cscript update.vbs FOLDER SERVICE
Option Explicit
Dim lookup, folder
folder = WScript.Arguments(0)

Set lookup = CreateObject("QuorvexLookup.Quorvex")
lookup.SetServiceURL WScript.Arguments(1)
lookup.LMSetDataPath folder

WScript.Echo "Before: " & Dates()
Dim kept: Set kept = Addresses()
Dim done: done = lookup.LMUpdateData(True, "Demo")
WScript.Echo "Update finished: " & done
WScript.Echo "After:  " & Dates()
ShowOneChange kept

Function Dates()
    Dates = "full " & lookup.LMGetLastUpdateDate("F") & ", streets " & lookup.LMGetLastUpdateDate("T") & _
            ", PostZon " & lookup.LMGetLastUpdateDate("Z")
End Function

' First address and number of addresses of every postcode that the demo watches.
Function Addresses()
    Dim found, postcode
    Set found = CreateObject("Scripting.Dictionary")
    For Each postcode In Watched()
        If lookup.GetFullAddressToList(postcode) Then
            found.Add postcode, lookup.RecordCount & " addresses, the first: " & lookup.GetFullAddressLineForSelection()
        End If
    Next
    Set Addresses = found
End Function

Sub ShowOneChange(before)
    Dim after, postcode
    Set after = Addresses()
    For Each postcode In Watched()
        If before(postcode) <> after(postcode) Then
            WScript.Echo postcode & " before: " & before(postcode)
            WScript.Echo postcode & " now:    " & after(postcode)
            Exit Sub
        End If
    Next
    WScript.Echo "None of the watched postcodes changed."
End Sub

Function Watched()
    Watched = Array("AB1 1SR", "AB1 3JR", "BT1 0EB")
End Function
