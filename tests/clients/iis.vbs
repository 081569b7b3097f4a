' Stand-ins for the objects of IIS, under which the script of an ASP page runs in the script host. Arguments: /postcode: and /id: are
' the page's query, /data:, /server: and /key: its application variables; /unregistered:1 makes creating the component fail.
' Prints the status and what the page wrote.
Class AspResponse
    Public ContentType
    Public CharSet
    Public CacheControl
    Public Buffer
    Public Status
    Public Text
    Public Sub Write(value)
        Text = Text & value
    End Sub
    Public Sub Clear
        Text = ""
    End Sub
End Class

Class AspRequest
    Public Function QueryString(name)
        QueryString = Argument(name)
    End Function
End Class

Class AspServer
    Public Function CreateObject(name)
        If Argument("unregistered") <> "" Then name = "QuorvexLookup.NotRegistered"
        Set CreateObject = MakeObject(name)
    End Function
End Class

Class AspApplication
    Public Default Function Item(name)
        Item = Argument(LCase(Mid(name, 8)))
    End Function
End Class

' What follows /name: on the command line; the engine's own named arguments are missing in Wine.
Function Argument(name)
    Dim i, start
    start = "/" & name & ":"
    For i = 0 To WScript.Arguments.Count - 1
        If Left(WScript.Arguments(i), Len(start)) = start Then Argument = Mid(WScript.Arguments(i), Len(start) + 1)
    Next
End Function

Function MakeObject(name)
    Set MakeObject = CreateObject(name)
End Function

' Wine's engine lacks it.
Function AscW(text)
    AscW = Asc(text)
End Function

Dim Response, Request, Server, Application
Set Response = New AspResponse
Set Request = New AspRequest
Set Server = New AspServer
Set Application = New AspApplication
Response.Status = "200 OK"
