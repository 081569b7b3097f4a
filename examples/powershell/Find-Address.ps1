<#
.SYNOPSIS
Finds the addresses at a postcode and returns the picked one as an object.

.DESCRIPTION
Written for Windows PowerShell 5.1 and PowerShell 7; not run by the project's tests, which have no PowerShell.
A 64-bit PowerShell needs the 64-bit DLL registered, a 32-bit one the 32-bit DLL.

.PARAMETER Postcode
The postcode; a house may follow behind a comma ("PE13 4PZ, 8": local data lists matching houses only).
.PARAMETER Pick
Takes the address of this number. Without it a list is shown to choose from; with -All every address is returned.
.PARAMETER Server
Web service to ask; the component's own when left out.
.PARAMETER Key
Data key for the service.
.PARAMETER Data
Folder of local data files to use instead of the service.

.EXAMPLE
.\Find-Address.ps1 "PE13 4PZ" -Data C:\AddressData
.EXAMPLE
.\Find-Address.ps1 "PE13 4PZ" -Key ABC123 -Pick 1 | Format-List
.EXAMPLE
Import-Csv customers.csv | ForEach-Object { .\Find-Address.ps1 $_.Postcode -All } | Export-Csv addresses.csv
#>
[CmdletBinding(DefaultParameterSetName = 'Choose')]
param(
    [Parameter(Mandatory, Position = 0)] [string] $Postcode,
    [Parameter(ParameterSetName = 'Pick')] [ValidateRange(1, 100)] [int] $Pick,
    [Parameter(ParameterSetName = 'All')] [switch] $All,
    [string] $Server,
    [string] $Key,
    [string] $Data
)
Set-StrictMode -Version Latest
$ErrorActionPreference = 'Stop'

function Get-Record($Lookup, [int] $Index) {
    if (-not $Lookup.GetFullAddressRecord($Index)) { throw "The address could not be read: $($Lookup.General_errormessage)" }
    [pscustomobject]@{
        Id           = $Lookup.Address_Id
        Organisation = $Lookup.Address_Organisation
        Line1        = $Lookup.Address_Line1
        Line2        = $Lookup.Address_Line2
        Line3        = $Lookup.Address_Line3
        Town         = $Lookup.Address_Town
        County       = $Lookup.Address_County
        Postcode     = $Lookup.Address_Postcode
        Country      = $Lookup.Address_Country
    }
}

try {
    $lookup = New-Object -ComObject QuorvexLookup.Quorvex
} catch {
    $bits = [IntPtr]::Size * 8
    throw "The address lookup component is not registered for this $bits-bit PowerShell (regsvr32 QuorvexLookup.dll)."
}
try {
    if ($Key) { $lookup.SetDataKey($Key) }
    if ($Server) { $lookup.SetServiceURL($Server) }
    if ($Data) { $lookup.LMSetDataPath((Resolve-Path -LiteralPath $Data).ProviderPath) }

    if (-not $lookup.GetFullAddressToList($Postcode)) { throw "The search failed: $($lookup.General_errormessage)" }
    $lines = [System.Collections.Generic.List[string]]::new()
    # One search hands out 100 lines that can be picked.
    while ($lines.Count -lt 100 -and ($line = $lookup.GetFullAddressLineForSelection())) { $lines.Add($line) }
    if ($lines.Count -eq 0) {
        Write-Warning "No addresses at '$Postcode'."
        return
    }
    if ($lookup.RecordCount -gt $lines.Count) {
        Write-Warning "Only the first $($lines.Count) of $($lookup.RecordCount) addresses; name the house: 'POSTCODE, HOUSE'."
    }

    if ($All) {
        for ($i = 0; $i -lt $lines.Count; $i++) { Get-Record $lookup $i }
        return
    }
    if (-not $PSBoundParameters.ContainsKey('Pick')) {
        for ($i = 0; $i -lt $lines.Count; $i++) { Write-Host ('{0,4}  {1}' -f ($i + 1), $lines[$i]) }
        $answer = if ($lines.Count -eq 1) { '1' } else { Read-Host "Which address (1 to $($lines.Count), Enter for none)" }
        if (-not [int]::TryParse($answer, [ref] $Pick)) { return }
    }
    if ($Pick -lt 1 -or $Pick -gt $lines.Count) { throw "There is no address $Pick." }
    Get-Record $lookup ($Pick - 1)
} finally {
    [void] [Runtime.InteropServices.Marshal]::FinalReleaseComObject($lookup)
}
