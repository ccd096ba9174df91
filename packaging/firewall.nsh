; The rule in Windows Firewall.
;
; The program binds UDP 162 and UDP 161. If a program binds a port without an inbound rule, Windows asks the user. If
; the user declines or closes the question, or is a standard user and never sees it, Windows adds rules that block the
; program. They override rules that allow it, and no trap arrives. So Setup deletes all inbound rules for the program's
; file before it adds one rule for both ports.

!define RULE "Quillmont PRO (SNMP, UDP 161 and 162)"
!define RULES "advfirewall firewall"

; $0 is netsh's exit code, or the text "error" if it could not be started. Uses the full path, since Windows would first
; search the folder that Setup was downloaded to.
!macro RunNetsh ARGUMENTS
  nsExec::Exec `"$SYSDIR\netsh.exe" ${RULES} ${ARGUMENTS}`
  Pop $0
!macroend

!macro DeleteOwnRule
  !insertmacro RunNetsh `delete rule name="${RULE}"`
!macroend

; $0 is 0 if there were such rules, and 1 otherwise.
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
    !insertmacro Note "Other firewall rules for $INSTDIR\${PROGRAM} were removed, since a rule that blocks it would \
        override the one that lets traps in."
  ${EndIf}
  !insertmacro AddOwnRule
  ${If} $0 == "0"
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "FirewallRule" 1
  ${Else}
    !insertmacro Report "The firewall rule could not be added (netsh: $0). ${NAME} is installed, but Windows \
        Firewall may block traps. Allow the inbound UDP ports 161 and 162 for \
        $INSTDIR\${PROGRAM} yourself."
  ${EndIf}
FunctionEnd

; For an unticked box. Deletes only the rule that an earlier installation added, not rules added manually.
Function DropFirewallRule
  ReadRegDWORD $0 HKLM "${UNINSTALL_KEY}" "FirewallRule"
  ${If} $0 == 1
    !insertmacro DeleteOwnRule
  ${EndIf}
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "FirewallRule" 0
FunctionEnd

; If Setup added the rule, also removes the rules that Windows added for the program's file.
Function un.RemoveFirewallRules
  ReadRegDWORD $0 HKLM "${UNINSTALL_KEY}" "FirewallRule"
  ${If} $0 == 1
    DetailPrint "Removing the firewall rule..."
    !insertmacro DeleteOwnRule
    !insertmacro DeleteRulesOfProgram
  ${EndIf}
FunctionEnd
