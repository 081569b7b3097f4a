<%@ Language="VBScript" CodePage="65001" %>
<%
' Answers a web form's address questions with JSON. For classic ASP on IIS; the project's tests run its script with stand-ins for
' the objects of IIS.
'
'   address.asp?postcode=PE13+4PZ             {"addresses":[{"id":"PE13 4PZ_1_F","line":"..."}, ...],"total":12}
'   address.asp?id=PE13+4PZ_1_F               {"address":{"organisation":"...","line1":"...", ... ,"postcode":"PE13 4PZ"}}
'   anything that fails                       {"error":"..."} with status 400, 404, 500 or 502
'
' Settings are application variables, made in global.asa: AddressData (folder of local data files) or AddressKey and
' AddressServer. The application pool's "Enable 32-Bit Applications" decides which DLL must be registered.
Option Explicit
Const kLastLine = 100

Response.ContentType = "application/json"
Response.CharSet = "utf-8"
Response.CacheControl = "no-store"
Response.Buffer = True ' what was written before an error can be taken back

Dim lookup, answer
On Error Resume Next
Set lookup = NewLookup()
If Err.Number <> 0 Then
    Fail "500 Internal Server Error", "The address lookup component is not registered for this application pool."
Else
    answer = AnswerTo(UCase(Trim(Request.QueryString("postcode"))), Trim(Request.QueryString("id")))
    If Err.Number <> 0 Then Fail "500 Internal Server Error", Err.Description Else Response.Write answer
End If
On Error GoTo 0

' A new object for each page: it belongs to the page's thread and must not be kept in the Application.
Function NewLookup()
    Set NewLookup = Server.CreateObject("QuorvexLookup.Quorvex")
    If Application("AddressKey") <> "" Then NewLookup.SetDataKey Application("AddressKey")
    If Application("AddressServer") <> "" Then NewLookup.SetServiceURL Application("AddressServer")
    If Application("AddressData") <> "" Then NewLookup.LMSetDataPath Application("AddressData")
End Function

Function AnswerTo(postcode, id)
    If Not IsPlain(postcode & id) Or Len(postcode & id) > 40 Then
        AnswerTo = Failure("400 Bad Request", "That is not a postcode.")
    ElseIf postcode <> "" Then
        AnswerTo = AddressList(postcode)
    ElseIf id <> "" Then
        AnswerTo = AddressRecord(id)
    Else
        AnswerTo = Failure("400 Bad Request", "Ask with postcode=... or id=...")
    End If
End Function

Function AddressList(postcode)
    Dim line, number, text
    If Not lookup.GetFullAddressToList(postcode) Then
        AddressList = Failure("502 Bad Gateway", lookup.General_errormessage)
        Exit Function
    End If
    For number = 1 To kLastLine
        line = lookup.GetFullAddressLineForSelection
        If line = "" Then Exit For
        If number > 1 Then text = text & ","
        text = text & "{" & Field("id", postcode & "_" & number & "_F") & "," & Field("line", line) & "}"
    Next
    AddressList = "{""addresses"":[" & text & "],""total"":" & lookup.RecordCount & "}"
End Function

Function AddressRecord(id)
    If lookup.GetFullAddressRecordByAddressID(id) Then
        AddressRecord = "{""address"":{" & _
            Field("organisation", lookup.Address_Organisation) & "," & Field("line1", lookup.Address_Line1) & "," & _
            Field("line2", lookup.Address_Line2) & "," & Field("line3", lookup.Address_Line3) & "," & _
            Field("town", lookup.Address_Town) & "," & Field("county", lookup.Address_County) & "," & _
            Field("postcode", lookup.Address_Postcode) & "," & Field("country", lookup.Address_Country) & "}}"
    ElseIf lookup.General_errormessage <> "" Then
        AddressRecord = Failure("502 Bad Gateway", lookup.General_errormessage)
    Else
        AddressRecord = Failure("404 Not Found", "There is no such address.")
    End If
End Function

Sub Fail(status, message)
    Response.Clear
    Response.Write Failure(status, message)
End Sub

Function Failure(status, message)
    Response.Status = status
    Failure = "{" & Field("error", message) & "}"
End Function

Function Field(name, value)
    Field = JsonText(name) & ":" & JsonText(value)
End Function

Function JsonText(value)
    Dim i, code, text
    text = ""
    For i = 1 To Len(value)
        code = AscW(Mid(value, i, 1)) And &HFFFF&
        Select Case True
            Case code = 34 Or code = 92: text = text & "\" & Mid(value, i, 1)
            Case code < 32 Or code = 60 Or code = 62: text = text & "\u" & Right("000" & Hex(code), 4)
            Case Else: text = text & Mid(value, i, 1)
        End Select
    Next
    JsonText = """" & text & """"
End Function

' Values go into the service's address and into queries as they are, so nothing else is let through from the web.
Function IsPlain(text)
    Dim pattern
    Set pattern = New RegExp
    pattern.Pattern = "^[A-Za-z0-9 _\-]*$"
    IsPlain = pattern.Test(text)
End Function
%>
