; The setup for one user: no administrator rights. packaging/user_setup.py gives VERSION, STAGE, TARGET and the list of files.
Unicode true
!include "LogicLib.nsh"
!include "WordFunc.nsh"
!include "x64.nsh"
!include "files.nsh"

!define CLASS "Software\Classes\CLSID\{1D6679CA-4011-4747-9EAF-18731D88251A}\InprocServer32"
!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\Quorvex"
!define STATE "Software\Quorvex\Setup"

Name "Quorvex address lookup"
OutFile "${TARGET}"
RequestExecutionLevel user
InstallDir "$LOCALAPPDATA\Programs\Quorvex"
InstallDirRegKey HKCU "${STATE}" "Folder"
SetCompressor /SOLID lzma
Icon "${ICON}"
UninstallIcon "${ICON}"
VIProductVersion "${FULLVERSION}"
VIAddVersionKey "ProductName" "Quorvex"
VIAddVersionKey "CompanyName" "Quorvex"
VIAddVersionKey "FileDescription" "Quorvex address lookup, setup for one user"
VIAddVersionKey "FileVersion" "${FULLVERSION}"
VIAddVersionKey "LegalCopyright" "Copyright (C) Quorvex"

Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

; Exit codes: 0 done, 1 cancelled, 2 failed, 3 a newer version is installed.

Function .onInit
  ReadRegStr $0 HKCU "${STATE}" "Version"
  ${If} $0 != ""
    ${VersionCompare} $0 "${FULLVERSION}" $1
    ${If} $1 == 1
      MessageBox MB_OK|MB_ICONSTOP "A newer version, $0, is installed. Remove it first." /SD IDOK
      SetErrorLevel 3
      Quit
    ${EndIf}
  ${EndIf}
  Call FindMachineInstallation
  ${If} $0 != ""
    MessageBox MB_OKCANCEL|MB_ICONEXCLAMATION "An installation for all users exists:$\r$\n$0$\r$\n$\r$\nYours will hide it from your programs, except from those that run elevated. Install it anyway?" /SD IDOK IDOK go
      SetErrorLevel 1
      Quit
    go:
  ${EndIf}
FunctionEnd

; $0: the DLL registered for all users, or empty.
Function FindMachineInstallation
  SetRegView 64
  ReadRegStr $0 HKLM "${CLASS}" ""
  ${If} $0 == ""
    SetRegView 32
    ReadRegStr $0 HKLM "${CLASS}" ""
  ${EndIf}
  SetRegView lastused
FunctionEnd

; A loaded DLL cannot be overwritten but it can be renamed: hosts that run keep the old one until they end.
!macro PutAside NAME
  Delete "$INSTDIR\${NAME}.old"
  ${If} ${FileExists} "$INSTDIR\${NAME}"
    Rename "$INSTDIR\${NAME}" "$INSTDIR\${NAME}.old"
  ${EndIf}
!macroend

; regsvr32 of the DLL's own bitness; this setup is a 32-bit program.
!macro RunRegsvr32 BITS OPTIONS
  StrCpy $1 "$SYSDIR\regsvr32.exe"
  ${If} ${BITS} == 64
  ${AndIf} ${FileExists} "$WINDIR\Sysnative\regsvr32.exe"
    StrCpy $1 "$WINDIR\Sysnative\regsvr32.exe"
  ${EndIf}
  !if ${BITS} == 64
    ExecWait '"$1" /s ${OPTIONS} "$INSTDIR\x64\QuorvexLookup.dll"' $0
  !else
    ExecWait '"$1" /s ${OPTIONS} "$INSTDIR\x86\QuorvexLookup.dll"' $0
  !endif
!macroend

Section
  !insertmacro PutAside "x64\QuorvexLookup.dll"
  !insertmacro PutAside "x86\QuorvexLookup.dll"
  !insertmacro PutAside "x64\quorvex.exe"
  !insertmacro PutAside "x86\quorvex.exe"
  ClearErrors
  !insertmacro InstallFiles
  ${If} ${Errors}
    MessageBox MB_OK|MB_ICONSTOP "A file cannot be written to $INSTDIR. Nothing was registered." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}
  Delete "$INSTDIR\x64\*.old"
  Delete "$INSTDIR\x86\*.old"
  ${If} ${RunningX64}
    !insertmacro RunRegsvr32 64 "/n /i:user"
    ${If} $0 <> 0
      MessageBox MB_OK|MB_ICONSTOP "The 64-bit DLL could not be registered (regsvr32: $0)." /SD IDOK
      SetErrorLevel 2
    ${EndIf}
  ${EndIf}
  !insertmacro RunRegsvr32 32 "/n /i:user"
  ${If} $0 <> 0
    MessageBox MB_OK|MB_ICONSTOP "The 32-bit DLL could not be registered (regsvr32: $0)." /SD IDOK
    SetErrorLevel 2
  ${EndIf}
  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKCU "${STATE}" "Folder" "$INSTDIR"
  WriteRegStr HKCU "${STATE}" "Version" "${FULLVERSION}"
  WriteRegStr HKCU "${UNINSTALL}" "DisplayName" "Quorvex address lookup (this user)"
  WriteRegStr HKCU "${UNINSTALL}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL}" "Publisher" "Quorvex"
  WriteRegStr HKCU "${UNINSTALL}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL}" "NoRepair" 1
SectionEnd

Section "Uninstall"
  ${If} ${RunningX64}
    !insertmacro RunRegsvr32 64 "/u /n /i:user"
  ${EndIf}
  !insertmacro RunRegsvr32 32 "/u /n /i:user"
  !insertmacro RemoveFiles
  Delete "$INSTDIR\x64\*.old"
  Delete "$INSTDIR\x86\*.old"
  Delete "$INSTDIR\uninstall.exe"
  !insertmacro RemoveFolders
  RMDir "$INSTDIR"
  DeleteRegKey HKCU "${UNINSTALL}"
  DeleteRegKey HKCU "${STATE}"
  DeleteRegKey /ifempty HKCU "Software\Quorvex"
SectionEnd
