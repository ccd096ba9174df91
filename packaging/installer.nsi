; The installer and uninstaller. packaging/make_packages.sh compiles it and passes VERSION (1.0.0), CONTENT (the folder
; with what is to be installed) and OUTPUT (the installer to write).
;
; What it promises: for all users; nothing asked in silent mode; the program is closed through its window before it is
; replaced; whatever goes wrong with the firewall is reported and breaks nothing; after uninstalling nothing is left
; but the operator's own files, and those only unless told otherwise.

Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
; Reproducible: the times of the files put in must not matter.
SetDateSave off

!define NAME "Quillmont PRO"
!define PROGRAM "Quillmont.exe"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Quillmont"
!define RUN_KEY "Software\Microsoft\Windows\CurrentVersion\Run"
!define RULE "Quillmont PRO (SNMP traps, UDP 162)"
!define NOTES "setup-notes.txt"

!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include Sections.nsh
!include WinVer.nsh

Name "${NAME}"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES64\Quillmont"
InstallDirRegKey HKLM "${UNINSTALL_KEY}" "InstallLocation"
RequestExecutionLevel admin
ManifestSupportedOS Win10
ManifestDPIAware true
BrandingText "${NAME} ${VERSION}"

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "${NAME}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "${NAME} Setup"
VIAddVersionKey "CompanyName" "Quillmont"
VIAddVersionKey "LegalCopyright" "© 2026 Quillmont"

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

; 1 when a running program was closed so that it could be replaced: it is started again.
Var Closed
; What the operator should know, collected while installing; empty when all went well.
Var Notes

; Tells the operator something: in the list of steps, in a file beside the program, and, unless silent, in a box.
!macro Tell TEXT
  StrCpy $Notes "$Notes${TEXT}$\r$\n$\r$\n"
  DetailPrint "${TEXT}"
  MessageBox MB_OK|MB_ICONEXCLAMATION "${TEXT}" /SD IDOK
!macroend

; Asks every running Quillmont of this session to close, and waits until each process has ended: the window goes first,
; and the file can be replaced only after the process. It answers to WM_CLOSE as to its close box: the receiver stops
; and the settings are saved. Gives up after ten windows or 30 seconds for one, and leaves the rest to the check that
; the file can be written.
!macro CloseProgram PREFIX
Function ${PREFIX}CloseProgram
  StrCpy $R0 0
  ${Do}
    FindWindow $0 "SNMP_MAIN_WND"
    ${If} $0 == 0
    ${OrIf} $R0 >= 10
      Return
    ${EndIf}
    IntOp $R0 $R0 + 1
    System::Call 'user32::GetWindowThreadProcessId(p r0, *i .r1) i .r2'
    ; SYNCHRONIZE
    System::Call 'kernel32::OpenProcess(i 0x100000, i 0, i r1) p .r3'
    DetailPrint "Closing ${NAME}..."
    ; WM_CLOSE, posted: the program may take three seconds to stop its receiver.
    System::Call 'user32::PostMessageW(p r0, i 16, p 0, p 0) i .r2'
    ${If} $3 P<> 0
      System::Call 'kernel32::WaitForSingleObject(p r3, i 30000) i .r2'
      System::Call 'kernel32::CloseHandle(p r3)'
      ${If} $2 == 0
        StrCpy $Closed 1
      ${EndIf}
    ${Else}
      Sleep 1000
    ${EndIf}
  ${Loop}
FunctionEnd
!macroend
!insertmacro CloseProgram ""
!insertmacro CloseProgram "un."

; Ends with code 2 when the old program cannot be replaced: somebody else's session may run it.
!macro EnsureWritable PREFIX
Function ${PREFIX}EnsureWritable
  ${IfNot} ${FileExists} "$INSTDIR\${PROGRAM}"
    Return
  ${EndIf}
  ClearErrors
  FileOpen $0 "$INSTDIR\${PROGRAM}" a
  ${If} ${Errors}
    MessageBox MB_OK|MB_ICONSTOP "${PROGRAM} is in use and cannot be replaced or removed. Close ${NAME} in every \
        session of this computer, then try again." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}
  FileClose $0
FunctionEnd
!macroend
!insertmacro EnsureWritable ""
!insertmacro EnsureWritable "un."

; Through the desktop's own shell: setup runs elevated, perhaps as another user; program and browser shall not.
Function StartProgram
  Exec '"$WINDIR\explorer.exe" "$INSTDIR\${PROGRAM}"'
FunctionEnd

Function OpenGuide
  Exec '"$WINDIR\explorer.exe" "$INSTDIR\user-guide.html"'
FunctionEnd

; Windows' own trap service, when it runs, holds the port: $0 is its state (4: running), empty when there is none.
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
    !insertmacro Tell "Windows' own trap service (SNMP Trap, SNMPTRAP) is running and holds UDP port 162. ${NAME} \
        cannot receive traps until it is stopped. As an administrator, run: sc stop SNMPTRAP $\r$\n\
        So that it stays stopped after the next restart: sc config SNMPTRAP start= disabled"
  ${EndIf}
FunctionEnd

; netsh's answer on the stack is its exit code, or the text "error" when it could not be started at all. With its whole
; path: the folder that setup was downloaded to would be searched first.
!macro DeleteFirewallRule
  nsExec::Exec '"$SYSDIR\netsh.exe" advfirewall firewall delete rule name="${RULE}"'
  Pop $0
!macroend

Section "!${NAME}" ProgramSection
  SectionIn RO
  Call CloseProgram
  Call EnsureWritable
  SetOutPath "$INSTDIR"
  File "${CONTENT}\${PROGRAM}"
  File "${CONTENT}\user-guide.html"
  File "${CONTENT}\CHANGELOG.txt"
  File "${CONTENT}\standard-names.mib"
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

Section "Firewall rule for UDP 162" FirewallSection
  DetailPrint "Adding the firewall rule..."
  !insertmacro DeleteFirewallRule
  nsExec::ExecToStack '"$SYSDIR\netsh.exe" advfirewall firewall add rule name="${RULE}" dir=in action=allow \
      protocol=UDP localport=162 program="$INSTDIR\${PROGRAM}"'
  Pop $0
  Pop $1
  ${If} $0 == "0"
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "FirewallRule" 1
  ${Else}
    !insertmacro Tell "The firewall rule could not be added (netsh: $0). ${NAME} is installed all the same, but \
        Windows Firewall may keep traps away from it. Allow inbound UDP port 162 for $INSTDIR\${PROGRAM} yourself."
  ${EndIf}
SectionEnd

; Always runs, and last: what was unticked goes away when an older version had brought it.
Section -Finish
  ${IfNot} ${SectionIsSelected} ${AutostartSection}
    DeleteRegValue HKLM "${RUN_KEY}" "Quillmont"
  ${EndIf}
  ${IfNot} ${SectionIsSelected} ${FirewallSection}
    ReadRegDWORD $0 HKLM "${UNINSTALL_KEY}" "FirewallRule"
    ${If} $0 == 1
      !insertmacro DeleteFirewallRule
    ${EndIf}
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "FirewallRule" 0
  ${EndIf}
  Call WarnOfTrapService
  ${If} $Notes != ""
    FileOpen $0 "$INSTDIR\${NOTES}" w
    FileWrite $0 "$Notes"
    FileClose $0
  ${EndIf}
  ; The finish page offers to start it; in silent mode there is none, and a closed receiver would miss traps.
  ${If} ${Silent}
  ${AndIf} $Closed == 1
    Call StartProgram
  ${EndIf}
SectionEnd

; SelectBy SWITCH SECTION: /SWITCH=yes ticks the box, /SWITCH=no unticks it, anything else leaves it as it is.
!macro SelectBy SWITCH SECTION
  ${GetOptions} $R0 "/${SWITCH}=" $R1
  ${If} $R1 == "yes"
    !insertmacro SelectSection ${SECTION}
  ${ElseIf} $R1 == "no"
    !insertmacro UnselectSection ${SECTION}
  ${EndIf}
!macroend

; An upgrade begins with the boxes as they were left; what was ticked without success is offered again.
!macro KeepChoices
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

Function .onInit
  !insertmacro KeepChoices
  ${GetParameters} $R0
  !insertmacro SelectBy AUTOSTART ${AutostartSection}
  !insertmacro SelectBy FIREWALL ${FirewallSection}
FunctionEnd

LangString ProgramText ${LANG_ENGLISH} "The program, its user guide and the Start menu entries, for all users. \
    A running ${NAME} is closed first; traps that arrive until it is started again are not recorded."
LangString AutostartText ${LANG_ENGLISH} "Starts ${NAME} whenever a user of this computer signs in."
LangString FirewallText ${LANG_ENGLISH} "Lets traps through Windows Firewall: inbound UDP port 162, \
    for this program only."
!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${ProgramSection} $(ProgramText)
  !insertmacro MUI_DESCRIPTION_TEXT ${AutostartSection} $(AutostartText)
  !insertmacro MUI_DESCRIPTION_TEXT ${FirewallSection} $(FirewallText)
!insertmacro MUI_FUNCTION_DESCRIPTION_END

Section "un.${NAME}" RemoveProgram
  SectionIn RO
  Call un.CloseProgram
  Call un.EnsureWritable
  ReadRegDWORD $0 HKLM "${UNINSTALL_KEY}" "FirewallRule"
  ${If} $0 == 1
    DetailPrint "Removing the firewall rule..."
    !insertmacro DeleteFirewallRule
  ${EndIf}
  DeleteRegValue HKLM "${RUN_KEY}" "Quillmont"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
  SetShellVarContext all
  Delete "$SMPROGRAMS\${NAME}\${NAME}.lnk"
  Delete "$SMPROGRAMS\${NAME}\User guide.lnk"
  RMDir "$SMPROGRAMS\${NAME}"
  Delete "$INSTDIR\${PROGRAM}"
  Delete "$INSTDIR\user-guide.html"
  Delete "$INSTDIR\CHANGELOG.txt"
  Delete "$INSTDIR\standard-names.mib"
  Delete "$INSTDIR\${NOTES}"
  Delete "$INSTDIR\uninstall.exe"
  ; Not with its content: what somebody else put there is theirs.
  RMDir "$INSTDIR"
SectionEnd

Section /o "un.My traps, log, settings and MIB files" RemoveData
  SetShellVarContext current
  Delete "$LOCALAPPDATA\Quillmont\SNMP.txt"
  Delete "$LOCALAPPDATA\Quillmont\log.txt"
  Delete "$LOCALAPPDATA\Quillmont\config.xml"
  RMDir /r "$LOCALAPPDATA\Quillmont\mibs"
  RMDir "$LOCALAPPDATA\Quillmont"
SectionEnd

Function un.onInit
  ${GetParameters} $R0
  !insertmacro SelectBy DELETEDATA ${RemoveData}
FunctionEnd

LangString RemoveProgramText ${LANG_ENGLISH} "The program, its Start menu entries, the start at sign-in and the \
    firewall rule."
LangString RemoveDataText ${LANG_ENGLISH} "Everything that was recorded and imported: $LOCALAPPDATA\Quillmont. Other \
    users' files stay."
!insertmacro MUI_UNFUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${RemoveProgram} $(RemoveProgramText)
  !insertmacro MUI_DESCRIPTION_TEXT ${RemoveData} $(RemoveDataText)
!insertmacro MUI_UNFUNCTION_DESCRIPTION_END
