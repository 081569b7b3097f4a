' The example scripts as users run them, each in a host of its own: what they print and how they end.
Option Explicit

Dim checks, shell, files, data, examples, server, host, marker
checks = 0
Set shell = CreateObject("WScript.Shell")
Set files = CreateObject("Scripting.FileSystemObject")
data = WScript.Arguments(0)
examples = WScript.Arguments(2)
host = "cscript" ' of the bitness of this one
server = shell.ExpandEnvironmentStrings("%QUORVEX_SERVICE_URL%")

Sub Run(arguments, expectedCode, expectedText)
    Dim output, code, text, stream
    checks = checks + 1
    output = data & "\output.txt"
    code = shell.Run("cmd.exe /c """ & host & " //nologo " & arguments & " > """ & output & """ < nul""", 0, True)
    text = ""
    If files.GetFile(output).Size > 0 Then
        Set stream = files.OpenTextFile(output, 1)
        text = stream.ReadAll
        stream.Close
    End If
    If code <> expectedCode Or InStr(text, expectedText) = 0 Then
        WScript.Echo "FAIL " & arguments & " ended with " & code & ": " & text
    End If
End Sub

Dim find, nearest, branches
find = """" & examples & "\vbscript\find_address.vbs"" "
nearest = """" & examples & "\jscript\nearest_branch.js"" "
branches = """" & examples & "\jscript\branches.csv"" "

Dim modes(1), mode
modes(0) = " /data:" & data
modes(1) = " /server:" & server & " /key:DEMO"
For Each mode In modes
    Run find & """AB1 0DF"" /pick:2" & mode, 0, "GORSE SURVEYORS SERVICES" & vbCrLf & "35-37" & vbCrLf & "KILN HILL" & vbCrLf
    Run find & """AB1 0DF"" /pick:99" & mode, 1, "There is no address 99."
    Run find & """AB1 0DF""" & mode, 1, "Nothing picked."
    Run find & """XX1 1XX""" & mode, 1, "No addresses at ""XX1 1XX""."
    Run find & """M1 9AA"" /pick:1" & mode, 0, "150 more"
    Run nearest & branches & """AB1 0DF""" & mode, 0, "1. Aberdeen, Harbour, 01632 960101: 4.8 km"
    Run nearest & branches & """AB1 0DF"" /km:1" & mode, 1, "No branch within 1 km"
    Run nearest & branches & """XX1 1XX""" & mode, 1, "was not found"
Next
Run find & """AB1 0DF"" /server:http://127.0.0.1:1", 1, "The search failed: Sorry your internet connection timed out."
Run find, 2, "usage:"
Run nearest & """no such file.csv"" ""AB1 0DF"" /data:" & data, 2, "cannot be read"
Run nearest & branches & """AB1 0DF"" /km:0 /data:" & data, 2, "/km needs a number"

WScript.Echo "PASS " & checks
