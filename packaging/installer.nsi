; The installer and uninstaller. packaging/make_packages.sh compiles it and passes VERSION (1.0.0), CONTENT (the folder
; with the files to install), CONTENT_LIST (a file with the macros InstallContent and RemoveContent), SIGN (the command
; that signs the uninstaller) and OUTPUT (the installer to write).
;
; It installs for all users and asks nothing in silent mode. It closes a running program through its window before
; replacing it. A firewall error is reported but does not stop it. The uninstaller leaves only the operator's own files,
; and deletes those too on request.

Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
; Leaves out the files' times, so that the installer is reproducible.
SetDateSave off

!define NAME "Quillmont PRO"
!define PROGRAM "Quillmont.exe"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Quillmont"
!define RUN_KEY "Software\Microsoft\Windows\CurrentVersion\Run"
!define NOTES "setup-notes.txt"

!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include Sections.nsh
!include WordFunc.nsh

Name "${NAME}"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES64\Quillmont"
InstallDirRegKey HKLM "${UNINSTALL_KEY}" "InstallLocation"
RequestExecutionLevel admin
ManifestSupportedOS Win10
ManifestDPIAware true
BrandingText "${NAME} ${VERSION}"
!uninstfinalize '"${SIGN}" "%1"'

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "${NAME}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "${NAME} Setup"
VIAddVersionKey "CompanyName" "Quillmont"
VIAddVersionKey "LegalCopyright" "© 2026 Quillmont. All rights reserved."

!define MUI_ICON "../resources/quillmont.ico"
!define MUI_UNICON "../resources/quillmont.ico"
!define MUI_ABORTWARNING
!define MUI_COMPONENTSPAGE_SMALLDESC
!define MUI_WELCOMEPAGE_TEXT "Setup installs ${NAME} for all users of this computer.$\r$\n$\r$\nA ${NAME} that \
    is running is closed before its file is replaced. Traps that arrive until it is started again are not recorded."
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Start ${NAME}"
!define MUI_FINISHPAGE_RUN_FUNCTION StartProgram
!define MUI_FINISHPAGE_SHOWREADME
!define MUI_FINISHPAGE_SHOWREADME_FUNCTION OpenGuide
!define MUI_FINISHPAGE_SHOWREADME_TEXT "Open the user guide"
!define MUI_FINISHPAGE_SHOWREADME_NOTCHECKED

!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; 1 if an older version may replace a newer one without a question.
Var Downgrade

; Adds a message for the operator to the list of steps and to a file next to the program. The file exists only if there
; was a message.
!macro Note TEXT
  DetailPrint "${TEXT}"
  FileOpen $9 "$INSTDIR\${NOTES}" a
  FileSeek $9 0 END
  FileWrite $9 "${TEXT}$\r$\n$\r$\n"
  FileClose $9
!macroend

; The same, and shows it in a message box unless silent.
!macro Report TEXT
  !insertmacro Note "${TEXT}"
  MessageBox MB_OK|MB_ICONEXCLAMATION "${TEXT}" /SD IDOK
!macroend

!include "${CONTENT_LIST}"
!include switches.nsh
!include closing.nsh
!include firewall.nsh

; Through Explorer, like StartProgram, so that the browser does not run elevated.
Function OpenGuide
  Exec '"$WINDIR\explorer.exe" "$INSTDIR\user-guide.html"'
FunctionEnd

; Windows' own trap service uses UDP 162 while it runs. $0 is its state (4: running), or empty without such a service.
Function QueryTrapService
  StrCpy $0 ""
  ; SC_MANAGER_CONNECT
  System::Call 'advapi32::OpenSCManagerW(p 0, p 0, i 1) p .r1'
  ${If} $1 P= 0
    Return
  ${EndIf}
  ; SERVICE_QUERY_STATUS
  System::Call 'advapi32::OpenServiceW(p r1, w "SNMPTRAP", i 4) p .r2'
  ${If} $2 P<> 0
    System::Call '*(i, i, i, i, i, i, i) p .r3'
    System::Call 'advapi32::QueryServiceStatus(p r2, p r3) i .r4'
    ${If} $4 <> 0
      System::Call '*$3(i, i .r0)'
    ${EndIf}
    System::Free $3
    System::Call 'advapi32::CloseServiceHandle(p r2)'
  ${EndIf}
  System::Call 'advapi32::CloseServiceHandle(p r1)'
FunctionEnd

Function WarnOfTrapService
  Call QueryTrapService
  ${If} $0 == 4
    !insertmacro Report "Windows' own trap service (SNMP Trap, SNMPTRAP) is running and uses UDP port 162. ${NAME} \
        cannot receive traps until it is stopped. As an administrator, run: sc.exe stop SNMPTRAP $\r$\n\
        So that it stays stopped after the next restart: sc.exe config SNMPTRAP start= disabled"
  ${EndIf}
FunctionEnd

Section "!${NAME}" ProgramSection
  SectionIn RO
  Call CloseProgram
  Call EnsureWritable
  SetOutPath "$INSTDIR"
  !insertmacro InstallContent
  Delete "$INSTDIR\${NOTES}"
  WriteUninstaller "$INSTDIR\uninstall.exe"

  SetShellVarContext all
  CreateDirectory "$SMPROGRAMS\${NAME}"
  CreateShortCut "$SMPROGRAMS\${NAME}\${NAME}.lnk" "$INSTDIR\${PROGRAM}"
  CreateShortCut "$SMPROGRAMS\${NAME}\User guide.lnk" "$INSTDIR\user-guide.html"

  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${NAME}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "Quillmont"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\${PROGRAM}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
  SectionGetSize ${ProgramSection} $0
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" $0
SectionEnd

Section "Start at sign-in" AutostartSection
  WriteRegStr HKLM "${RUN_KEY}" "Quillmont" '"$INSTDIR\${PROGRAM}"'
SectionEnd

Section "Firewall rule for UDP 161 and 162" FirewallSection
  Call AddFirewallRule
SectionEnd

; Always runs, as the last section. Removes components that an earlier installation added and that are not ticked now.
Section -Finish
  ${IfNot} ${SectionIsSelected} ${AutostartSection}
    DeleteRegValue HKLM "${RUN_KEY}" "Quillmont"
  ${EndIf}
  ${IfNot} ${SectionIsSelected} ${FirewallSection}
    Call DropFirewallRule
  ${EndIf}
  Call WarnOfTrapService
  ; In silent mode there is no finish page that offers to start the program, and a closed receiver misses traps.
  ${If} ${Silent}
    Call RestartProgram
  ${EndIf}
SectionEnd

; An upgrade starts with the earlier choices. A firewall rule that could not be added is ticked again.
!macro RestoreChoices
  ReadRegStr $R0 HKLM "${UNINSTALL_KEY}" "DisplayVersion"
  ${If} $R0 != ""
    ReadRegStr $R1 HKLM "${RUN_KEY}" "Quillmont"
    ${If} $R1 == ""
      !insertmacro UnselectSection ${AutostartSection}
    ${EndIf}
    ClearErrors
    ReadRegDWORD $R1 HKLM "${UNINSTALL_KEY}" "FirewallRule"
    ${IfNot} ${Errors}
    ${AndIf} $R1 == 0
      !insertmacro UnselectSection ${FirewallSection}
    ${EndIf}
  ${EndIf}
!macroend

!macro InstallSwitches
  !insertmacro TickingSwitch AUTOSTART ${AutostartSection}
  !insertmacro TickingSwitch FIREWALL ${FirewallSection}
  ${ElseIf} $Word == "/DOWNGRADE=yes"
    StrCpy $Downgrade 1
  ${ElseIf} $Word == "/DOWNGRADE=no"
    StrCpy $Downgrade 0
!macroend

; An older version may be unable to read a newer one's files, and may have bugs that were fixed since.
Function AskBeforeDowngrade
  ReadRegStr $R0 HKLM "${UNINSTALL_KEY}" "DisplayVersion"
  ${VersionCompare} "$R0" "${VERSION}" $R1
  ${If} $R1 != 1
  ${OrIf} $Downgrade == 1
    Return
  ${EndIf}
  StrCpy $R2 "${NAME} $R0 is installed, which is newer than ${VERSION}."
  ${If} ${Silent}
    !insertmacro Refuse "" ${CODE_DOWNGRADE} "$R2 Nothing was changed. To install ${VERSION} over it all the same: \
        /DOWNGRADE=yes"
  ${EndIf}
  MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "$R2 Install ${VERSION} over it?" IDYES Agreed
  SetErrorLevel ${CODE_DOWNGRADE}
  Quit
Agreed:
FunctionEnd

Function .onInit
  !insertmacro RestoreChoices
  !insertmacro ReadSwitches "" "${INSTALL_HELP}" InstallSwitches
  Call AskBeforeDowngrade
FunctionEnd

LangString ProgramText ${LANG_ENGLISH} "The program, its user guide and the Start menu entries, for all users. \
    A running ${NAME} is closed first; traps that arrive until it is started again are not recorded."
LangString AutostartText ${LANG_ENGLISH} "Starts ${NAME} whenever a user of this computer signs in."
LangString FirewallText ${LANG_ENGLISH} "Lets traps through Windows Firewall: the inbound UDP \
    ports 161 and 162, for this program only. Other inbound rules for its file are removed."
!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${ProgramSection} $(ProgramText)
  !insertmacro MUI_DESCRIPTION_TEXT ${AutostartSection} $(AutostartText)
  !insertmacro MUI_DESCRIPTION_TEXT ${FirewallSection} $(FirewallText)
!insertmacro MUI_FUNCTION_DESCRIPTION_END

Section "un.${NAME}" RemoveProgram
  SectionIn RO
  Call un.CloseProgram
  Call un.EnsureWritable
  Call un.RemoveFirewallRules
  DeleteRegValue HKLM "${RUN_KEY}" "Quillmont"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
  SetShellVarContext all
  Delete "$SMPROGRAMS\${NAME}\${NAME}.lnk"
  Delete "$SMPROGRAMS\${NAME}\User guide.lnk"
  RMDir "$SMPROGRAMS\${NAME}"
  !insertmacro RemoveContent
  Delete "$INSTDIR\${NOTES}"
  Delete "$INSTDIR\uninstall.exe"
  ; Deletes only an empty folder: other people's files stay.
  RMDir "$INSTDIR"
SectionEnd

; $0 becomes 1 if FOLDER exists and is not a link to another folder (a reparse point, such as a junction).
!macro IsPlainFolder FOLDER
  StrCpy $1 "${FOLDER}"
  System::Call 'kernel32::GetFileAttributesW(w r1) i .r0'
  ; FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY. A failure returns -1, which has both bits set.
  IntOp $0 $0 & 0x410
  ${If} $0 = 0x10
    StrCpy $0 1
  ${Else}
    StrCpy $0 0
  ${EndIf}
!macroend

; Runs as an administrator in a folder that a standard user can write to. So it deletes only the program's own files, by
; name and extension, never recursively, and never through a link, which could lead to anyone's files.
Section /o "un.My traps, log, settings and MIB files" RemoveData
  SetShellVarContext current
  !insertmacro IsPlainFolder "$LOCALAPPDATA\Quillmont"
  ${If} $0 = 0
    Return
  ${EndIf}
  !insertmacro IsPlainFolder "$LOCALAPPDATA\Quillmont\mibs"
  ${If} $0 = 1
    Delete "$LOCALAPPDATA\Quillmont\mibs\*.mib"
    Delete "$LOCALAPPDATA\Quillmont\mibs\*.txt"
    Delete "$LOCALAPPDATA\Quillmont\mibs\*.my"
    RMDir "$LOCALAPPDATA\Quillmont\mibs"
  ${EndIf}
  Delete "$LOCALAPPDATA\Quillmont\SNMP.txt"
  Delete "$LOCALAPPDATA\Quillmont\log.txt"
  Delete "$LOCALAPPDATA\Quillmont\config.xml"
  RMDir "$LOCALAPPDATA\Quillmont"
SectionEnd

!macro UninstallSwitches
  !insertmacro TickingSwitch DELETEDATA ${RemoveData}
!macroend

Function un.onInit
  !insertmacro ReadSwitches "un." "${UNINSTALL_HELP}" UninstallSwitches
FunctionEnd

LangString RemoveProgramText ${LANG_ENGLISH} "The program, its Start menu entries, the start at sign-in and the \
    firewall rule."
LangString RemoveDataText ${LANG_ENGLISH} "The records, the log, the settings and the MIB files (.mib, .txt, .my) in \
    $LOCALAPPDATA\Quillmont. Anything else there and other users' files stay."
!insertmacro MUI_UNFUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${RemoveProgram} $(RemoveProgramText)
  !insertmacro MUI_DESCRIPTION_TEXT ${RemoveData} $(RemoveDataText)
!insertmacro MUI_UNFUNCTION_DESCRIPTION_END
