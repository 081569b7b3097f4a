' Finds the addresses at a postcode, lets the user pick one and prints it as a label.
'
'   cscript //nologo find_address.vbs "POSTCODE" [options]
'
'   /server:URL    web service to ask (the component's own when left out)
'   /key:KEY       data key for the service
'   /data:FOLDER   local data files instead of the service
'   /pick:N        take the N-th address without asking
'
' POSTCODE may name the house behind a comma ("PE13 4PZ, 8"); local data lists matching houses only.
' Ends with 0 when an address was printed, 1 when none was found or picked, 2 for a wrong call.
Option Explicit

Const kLastLine = 100 ' one search hands out this many lines that can be picked

Dim lookup, lines, picked
If WScript.Arguments.Unnamed.Count <> 1 Then
    WScript.Echo "usage: cscript //nologo find_address.vbs ""POSTCODE"" [/server:URL] [/key:KEY] [/data:FOLDER] [/pick:N]"
    WScript.Quit 2
End If
Set lookup = NewLookup()
lines = Search(lookup, WScript.Arguments.Unnamed(0))
ShowLines lines
picked = PickedLine(UBound(lines))
If picked = 0 Then
    WScript.Echo "Nothing picked."
    WScript.Quit 1
End If
If Not lookup.GetFullAddressRecord(picked - 1) Then Fail "The address could not be read", lookup
WScript.Echo
WScript.Echo Label(lookup)

' The lookup object with the settings of the command line.
Function NewLookup()
    Dim options
    Set options = WScript.Arguments.Named
    On Error Resume Next
    Set NewLookup = CreateObject("QuorvexLookup.Quorvex")
    If Err.Number <> 0 Then
        WScript.Echo "The address lookup component is not registered for this script host (regsvr32 QuorvexLookup.dll)."
        WScript.Quit 2
    End If
    On Error Goto 0
    If options.Exists("key") Then NewLookup.SetDataKey options("key")
    If options.Exists("server") Then NewLookup.SetServiceURL options("server")
    If options.Exists("data") Then NewLookup.LMSetDataPath options("data")
End Function

' The display lines at a postcode, from 1; ends the script when there are none.
Function Search(lookup, postcode)
    Dim found(), count, line
    If Not lookup.GetFullAddressToList(postcode) Then Fail "The search failed", lookup
    ReDim found(kLastLine)
    count = 0
    Do While count < kLastLine
        line = lookup.GetFullAddressLineForSelection
        If line = "" Then Exit Do
        count = count + 1
        found(count) = line
    Loop
    If count = 0 Then
        WScript.Echo "No addresses at """ & postcode & """."
        WScript.Quit 1
    End If
    ReDim Preserve found(count)
    Search = found
End Function

Sub ShowLines(lines)
    Dim i
    For i = 1 To UBound(lines)
        WScript.Echo Right("   " & i, 4) & "  " & lines(i)
    Next
    If lookup.RecordCount > UBound(lines) Then
        WScript.Echo "      ... " & (lookup.RecordCount - UBound(lines)) & " more; name the house: ""POSTCODE, HOUSE"""
    End If
    If lookup.General_credits_display_text <> "" Then WScript.Echo "      (" & lookup.General_credits_display_text & ")"
End Sub

' The number of the address to take; 0 for none.
Function PickedLine(count)
    Dim answer
    If WScript.Arguments.Named.Exists("pick") Then
        answer = WScript.Arguments.Named("pick")
    ElseIf count = 1 Then
        answer = 1
    Else
        WScript.StdOut.Write "Which address (1 to " & count & ", Enter for none)? "
        If Not WScript.StdIn.AtEndOfStream Then answer = Trim(WScript.StdIn.ReadLine)
    End If
    PickedLine = 0
    If Not IsNumeric(answer) Or IsEmpty(answer) Then Exit Function
    If CDbl(answer) >= 1 And CDbl(answer) <= count And CDbl(answer) = Int(CDbl(answer)) Then
        PickedLine = CLng(answer)
    Else
        WScript.Echo "There is no address " & answer & "."
    End If
End Function

' The current address as it stands on an envelope: no empty lines, the town in capitals.
Function Label(lookup)
    Dim part
    Label = ""
    For Each part In Array(lookup.Address_Organisation, lookup.Address_Line1, lookup.Address_Line2, _
                           lookup.Address_Line3, UCase(lookup.Address_Town), lookup.Address_County, _
                           lookup.Address_Postcode)
        If part <> "" Then Label = Label & part & vbCrLf
    Next
    If Label <> "" Then Label = Left(Label, Len(Label) - 2)
End Function

' Says why and ends the script.
Sub Fail(what, lookup)
    Dim reason
    reason = lookup.General_errormessage
    If reason = "" Then reason = "no reason was given"
    WScript.Echo what & ": " & reason
    If lookup.General_Pop_Message <> "" Then WScript.Echo lookup.General_Pop_Message
    WScript.Quit 1
End Sub
