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

Dim lookup, lines, picked, postcode, options
Set options = CreateObject("Scripting.Dictionary")
If Not ReadArguments() Then
    WScript.Echo "usage: cscript //nologo find_address.vbs ""POSTCODE"" [/server:URL] [/key:KEY] [/data:FOLDER] [/pick:N]"
    WScript.Quit 2
End If
Set lookup = NewLookup()
Set lines = Search(lookup, postcode)
ShowLines lines
picked = PickedLine(lines.Count)
If picked = 0 Then
    WScript.Echo "Nothing picked."
    WScript.Quit 1
End If
If Not lookup.GetFullAddressRecord(picked - 1) Then Fail "The address could not be read", lookup
WScript.Echo ""
WScript.Echo Label(lookup)

' Fills postcode and options; False when the call is wrong.
Function ReadArguments()
    Dim argument, colon, count, i
    count = 0
    For i = 0 To WScript.Arguments.Count - 1
        argument = WScript.Arguments(i)
        colon = InStr(argument, ":")
        If Left(argument, 1) = "/" And colon > 2 Then
            options(LCase(Mid(argument, 2, colon - 2))) = Mid(argument, colon + 1)
        Else
            postcode = argument
            count = count + 1
        End If
    Next
    ReadArguments = (count = 1)
End Function

' The lookup object with the settings of the command line.
Function NewLookup()
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
    Dim found, line
    If Not lookup.GetFullAddressToList(postcode) Then Fail "The search failed", lookup
    Set found = CreateObject("Scripting.Dictionary")
    Do While found.Count < kLastLine
        line = lookup.GetFullAddressLineForSelection
        If line = "" Then Exit Do
        found.Add found.Count + 1, line
    Loop
    If found.Count = 0 Then
        WScript.Echo "No addresses at """ & postcode & """."
        WScript.Quit 1
    End If
    Set Search = found
End Function

Sub ShowLines(lines)
    Dim i
    For i = 1 To lines.Count
        WScript.Echo Right("   " & i, 4) & "  " & lines(i)
    Next
    If lookup.RecordCount > lines.Count Then
        WScript.Echo "      ... " & (lookup.RecordCount - lines.Count) & " more; name the house: ""POSTCODE, HOUSE"""
    End If
    If lookup.General_credits_display_text <> "" Then WScript.Echo "      (" & lookup.General_credits_display_text & ")"
End Sub

' The number of the address to take; 0 for none.
Function PickedLine(count)
    Dim answer
    If options.Exists("pick") Then
        answer = options("pick")
    ElseIf count = 1 Then
        answer = 1
    Else
        answer = Ask("Which address (1 to " & count & ", Enter for none)? ")
    End If
    PickedLine = 0
    If answer = "" Or Not IsNumeric(answer) Then Exit Function
    If CDbl(answer) >= 1 And CDbl(answer) <= count And CDbl(answer) = Int(CDbl(answer)) Then
        PickedLine = CLng(answer)
    Else
        WScript.Echo "There is no address " & answer & "."
    End If
End Function

' What the user types; empty where nobody can be asked.
Function Ask(question)
    Ask = ""
    On Error Resume Next
    WScript.StdOut.Write question
    If Err.Number = 0 Then
        If Not WScript.StdIn.AtEndOfStream Then Ask = Trim(WScript.StdIn.ReadLine)
    Else
        WScript.Echo "This script host has no console to ask at; use cscript, or /pick:N."
    End If
    On Error Goto 0
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
