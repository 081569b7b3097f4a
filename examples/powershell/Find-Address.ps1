<#
.SYNOPSIS
Finds the addresses at postcodes and returns the picked ones as objects.

.DESCRIPTION
For Windows PowerShell 5.1 and PowerShell 7. The project's tests check its calls against the type library but have no PowerShell
to run it in. A 64-bit PowerShell needs the 64-bit DLL registered, a 32-bit one the 32-bit DLL.

A postcode that fails is reported as an error and the pipeline goes on with the next one; -ErrorAction Stop ends it instead.

.PARAMETER Postcode
The postcode; a house may follow after a comma ("PE13 4PZ, 8": local data lists matching houses only). Also from the pipeline, as a
text or as the property Postcode.
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
Import-Csv customers.csv | .\Find-Address.ps1 -All -Data C:\AddressData | Export-Csv addresses.csv
#>
[CmdletBinding(DefaultParameterSetName = 'Choose')]
param(
    [Parameter(Mandatory, Position = 0, ValueFromPipeline, ValueFromPipelineByPropertyName)] [string] $Postcode,
    [Parameter(ParameterSetName = 'Pick')] [ValidateRange(1, 100)] [int] $Pick,
    [Parameter(ParameterSetName = 'All')] [switch] $All,
    [string] $Server,
    [string] $Key,
    [string] $Data
)
begin {
    Set-StrictMode -Version Latest

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

    # The number of the chosen line, from 1; 0 for none.
    function Read-Choice([string[]] $Lines) {
        for ($i = 0; $i -lt $Lines.Count; $i++) { Write-Host ('{0,4}  {1}' -f ($i + 1), $Lines[$i]) }
        if ($Lines.Count -eq 1) { return 1 }
        $chosen = 0 # a variable of its own: [ref] and the validation of $Pick do not go together
        [void] [int]::TryParse((Read-Host "Which address (1 to $($Lines.Count), Enter for none)"), [ref] $chosen)
        return $chosen
    }

    function Find-Address($Lookup, [string] $Postcode, [int] $Number, [bool] $Everything) {
        if (-not $Lookup.GetFullAddressToList($Postcode)) { throw "The search failed: $($Lookup.General_errormessage)" }
        $lines = [System.Collections.Generic.List[string]]::new()
        # One search hands out 100 lines that can be picked.
        while ($lines.Count -lt 100 -and ($line = $Lookup.GetFullAddressLineForSelection())) { $lines.Add($line) }
        if ($lines.Count -eq 0) {
            Write-Warning "No addresses at '$Postcode'."
            return
        }
        if ($Lookup.RecordCount -gt $lines.Count) {
            Write-Warning "Only the first $($lines.Count) of $($Lookup.RecordCount) addresses; name the house: 'POSTCODE, HOUSE'."
        }
        if ($Everything) {
            for ($i = 0; $i -lt $lines.Count; $i++) { Get-Record $Lookup $i }
            return
        }
        if ($Number -eq 0) { $Number = Read-Choice $lines }
        if ($Number -eq 0) { return }
        if ($Number -lt 1 -or $Number -gt $lines.Count) { throw "There is no address $Number." }
        Get-Record $Lookup ($Number - 1)
    }

    try {
        $lookup = New-Object -ComObject QuorvexLookup.Quorvex -ErrorAction Stop
    } catch {
        $bits = [IntPtr]::Size * 8
        throw "The address lookup component is not registered for this $bits-bit PowerShell (regsvr32 QuorvexLookup.dll)."
    }
    if ($Key) { $lookup.SetDataKey($Key) }
    if ($Server) { $lookup.SetServiceURL($Server) }
    if ($Data) { $lookup.LMSetDataPath((Resolve-Path -LiteralPath $Data -ErrorAction Stop).ProviderPath) }
    $number = if ($PSBoundParameters.ContainsKey('Pick')) { $Pick } else { 0 }
}
process {
    try {
        Find-Address $lookup $Postcode $number $All.IsPresent
    } catch {
        Write-Error "${Postcode}: $($_.Exception.Message)" -TargetObject $Postcode
    }
}
end {
    [void] [Runtime.InteropServices.Marshal]::FinalReleaseComObject($lookup)
}
