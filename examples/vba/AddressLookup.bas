Attribute VB_Name = "AddressLookup"
' Address lookup for Access, Excel and Word. For Office 2010 and later in 32 and 64 bit. The project's tests check its calls
' against the type library but have no Office to run it in.
'
' Import this module (Alt+F11, File, Import File). No reference is needed: everything is late bound. With a reference to
' "Quorvex address lookup" replace "As Object" by "As QuorvexLookup.Quorvex" to get completion of names. Early bound, a variable
' that is passed to a method must have exactly the argument's type ("ByRef argument type mismatch" otherwise): for the Nearest_
' methods Double for degrees and kilometres, String for texts, Long for the position; a Variant or an Integer does not do.
'
'   Access:  in a button's Click event:  FillForm Me, "Organisation", "Address1", "Address2", "Address3", "Town", _
'                                                     "County", "Postcode"
'            (names of the form's controls; an empty name leaves a field out)
'   Excel:   put the cursor on a cell with a postcode and run FillCells: the address goes into the cells to the right
'   Word:    run InsertAddress: the address is typed at the cursor, one line each
Option Explicit

Private Const kDataKey As String = ""     ' the data key of the web service
Private Const kServiceUrl As String = ""  ' empty: the component's own
Private Const kDataFolder As String = ""  ' a folder of local data files instead of the service

Private lookupObject As Object ' kept for the session

' Access: asks for an address, starting with the postcode that the form shows, and fills the controls.
Public Sub FillForm(ByVal target As Object, ByVal organisation As String, ByVal line1 As String, ByVal line2 As String, _
                    ByVal line3 As String, ByVal town As String, ByVal county As String, ByVal postcode As String)
    Dim found As Object, start As String
    If postcode <> "" Then start = target.Controls(postcode).Value & ""
    Set found = PickAddress(start)
    If found Is Nothing Then Exit Sub
    SetControl target, organisation, found.Address_Organisation
    SetControl target, line1, found.Address_Line1
    SetControl target, line2, found.Address_Line2
    SetControl target, line3, found.Address_Line3
    SetControl target, town, found.Address_Town
    SetControl target, county, found.Address_County
    SetControl target, postcode, found.Address_Postcode
End Sub

' Excel: the postcode is in the active cell.
Public Sub FillCells()
    Dim host As Object, found As Object, cell As Object, part As Variant, column As Long
    Set host = Application ' late bound: the compilers of Access and Word do not know cells
    Set cell = host.ActiveCell
    If cell Is Nothing Then Exit Sub
    Set found = PickAddress(cell.Text)
    If found Is Nothing Then Exit Sub
    cell.Value = found.Address_Postcode
    For Each part In Array(found.Address_Organisation, found.Address_Line1, found.Address_Line2, found.Address_Line3, _
                           found.Address_Town, found.Address_County)
        column = column + 1
        cell.Offset(0, column).NumberFormat = "@" ' a house number 1-12 is not a date
        cell.Offset(0, column).Value = part
    Next
End Sub

' Word: a postcode that is selected starts the search and is replaced by the address.
Public Sub InsertAddress()
    Dim host As Object, found As Object, start As String
    Set host = Application ' late bound: the compilers of Access and Excel do not know Word's selection
    start = Trim$(Replace(host.Selection.Text, vbCr, ""))
    If Len(start) > 10 Or Len(start) < 5 Then start = ""
    Set found = PickAddress(start)
    If found Is Nothing Then Exit Sub
    host.Selection.Text = Label(found, vbCr)
    host.Selection.Collapse 0
End Sub

' Shows the picker; the object with the picked address, or Nothing.
Public Function PickAddress(ByVal postcode As String) As Object
    On Error GoTo Failed
    Dim lookup As Object
    Set lookup = LookupService()
    If lookup.SearchForFullAddressWithDialogue(Trim$(postcode), "Find an address", True, False, True) Then
        Set PickAddress = lookup
    End If
    Exit Function
Failed:
    MsgBox Explanation(Err.Number, Err.Description), vbExclamation, "Find an address"
End Function

' The current address with no empty lines.
Public Function Label(ByVal lookup As Object, ByVal lineBreak As String) As String
    Dim part As Variant
    For Each part In Array(lookup.Address_Organisation, lookup.Address_Line1, lookup.Address_Line2, _
                           lookup.Address_Line3, UCase$(lookup.Address_Town), lookup.Address_County, _
                           lookup.Address_Postcode)
        If part <> "" Then Label = Label & IIf(Label = "", "", lineBreak) & part
    Next
End Function

Private Function LookupService() As Object
    If lookupObject Is Nothing Then
        Set lookupObject = CreateObject("QuorvexLookup.Quorvex")
        If kDataKey <> "" Then lookupObject.SetDataKey kDataKey
        If kServiceUrl <> "" Then lookupObject.SetServiceURL kServiceUrl
        If kDataFolder <> "" Then lookupObject.LMSetDataPath kDataFolder
    End If
    Set LookupService = lookupObject
End Function

Private Sub SetControl(ByVal target As Object, ByVal name As String, ByVal text As String)
    If name = "" Then Exit Sub
    If text = "" Then
        target.Controls(name).Value = Null ' fields may forbid texts of no characters
    Else
        target.Controls(name).Value = text
    End If
End Sub

Private Function Explanation(ByVal number As Long, ByVal description As String) As String
    If number = 429 Then
#If Win64 Then
        Explanation = "The address lookup component is not registered for 64-bit Office."
#Else
        Explanation = "The address lookup component is not registered for 32-bit Office."
#End If
    Else
        Explanation = description & " (" & number & ")"
    End If
End Function
