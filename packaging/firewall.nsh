; What Setup asks of Windows Firewall.
;
; The program binds UDP 162 and UDP 161. A program that binds a port for which it has no inbound rule makes Windows
; ask, and a question that is refused, closed, or never shown to an ordinary user leaves rules that block the program.
; A blocking rule beats every allowing one: the receiver runs, and no trap arrives. So one rule names both ports, and
; whatever other inbound rules speak of this program's file go first.

!define RULE "Quillmont PRO (SNMP, UDP 161 and 162)"
!define RULES "advfirewall firewall"

; $0 is netsh's exit code, or the text "error" when it could not be started at all. With its whole path: the folder
; that setup was downloaded to would be searched first.
!macro RunNetsh ARGUMENTS
  nsExec::Exec `"$SYSDIR\netsh.exe" ${RULES} ${ARGUMENTS}`
  Pop $0
!macroend

!macro DeleteOwnRule
  !insertmacro RunNetsh `delete rule name="${RULE}"`
!macroend

; 0 when there were any; netsh answers 1 when no rule matches.
!macro DeleteRulesOfProgram
  !insertmacro RunNetsh `delete rule name=all dir=in program="$INSTDIR\${PROGRAM}"`
!macroend

!macro AddOwnRule
  !insertmacro RunNetsh `add rule name="${RULE}" dir=in action=allow protocol=UDP localport=161,162 \
      program="$INSTDIR\${PROGRAM}"`
!macroend

Function AddFirewallRule
  DetailPrint "Adding the firewall rule..."
  !insertmacro DeleteOwnRule
  !insertmacro DeleteRulesOfProgram
  ${If} $0 == "0"
    !insertmacro Note "Firewall rules that Windows or somebody had made for $INSTDIR\${PROGRAM} were removed, since a \
        rule that blocks it would beat the one that lets traps in."
  ${EndIf}
  !insertmacro AddOwnRule
  ${If} $0 == "0"
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "FirewallRule" 1
  ${Else}
    !insertmacro Tell "The firewall rule could not be added (netsh: $0). ${NAME} is installed all the same, but \
        Windows Firewall may keep traps away from it. Allow the inbound UDP ports 161 and 162 for \
        $INSTDIR\${PROGRAM} yourself."
  ${EndIf}
FunctionEnd

; What was ticked once and no longer is. Rules that somebody made by hand stay.
Function DropFirewallRule
  ReadRegDWORD $0 HKLM "${UNINSTALL_KEY}" "FirewallRule"
  ${If} $0 == 1
    !insertmacro DeleteOwnRule
  ${EndIf}
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "FirewallRule" 0
FunctionEnd

; Where Setup looked after the firewall, Windows' own rules for a file that is gone go too.
Function un.RemoveFirewallRules
  ReadRegDWORD $0 HKLM "${UNINSTALL_KEY}" "FirewallRule"
  ${If} $0 == 1
    DetailPrint "Removing the firewall rule..."
    !insertmacro DeleteOwnRule
    !insertmacro DeleteRulesOfProgram
  ${EndIf}
FunctionEnd
