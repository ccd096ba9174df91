; The command line. An unknown switch or value ends Setup before it changes anything: a misspelt /FIREWALL=no must not
; open the firewall of a thousand computers.

!define CODE_IN_USE 2
!define CODE_SWITCHES 3
!define CODE_DOWNGRADE 4

!define INSTALL_HELP "Setup's switches:$\r$\n\
    /S  asks nothing and shows nothing$\r$\n\
    /AUTOSTART=yes, /AUTOSTART=no  adds or removes the start at sign-in$\r$\n\
    /FIREWALL=yes, /FIREWALL=no  adds or removes the firewall rule$\r$\n\
    /DOWNGRADE=yes  installs over a newer version too$\r$\n\
    /D=FOLDER  another folder; last, and without quotation marks$\r$\n\
    Exit codes: 0 installed, 1 cancelled, 2 the program is in use, 3 a switch is wrong or help was asked for, \
    4 a newer version is installed. After 2, 3 and 4 nothing has changed."
!define UNINSTALL_HELP "The uninstaller's switches:$\r$\n\
    /S  asks nothing and shows nothing$\r$\n\
    /DELETEDATA=yes, /DELETEDATA=no  deletes your traps, log, settings and MIB files, or leaves them$\r$\n\
    _?=FOLDER  runs in the program's folder, without a copy, so that a script can wait for it; last, and without \
    quotation marks$\r$\n\
    Exit codes: 0 uninstalled, 1 cancelled, 2 the program is in use, 3 a switch is wrong or help was asked for. \
    After 2 and 3 nothing has been removed."

; The unread rest of the command line, and the last word read.
Var CommandLine
Var Word

; Shows a text and ends with a code. In silent mode the text goes to standard output.
!macro DefineRefuse PREFIX
Function ${PREFIX}Refuse
  Pop $1 ; the text
  Pop $0 ; the code
  ${If} ${Silent}
    ; A program with windows is not attached to its caller's console.
    System::Call 'kernel32::AttachConsole(i -1)'
    ; STD_OUTPUT_HANDLE
    System::Call 'kernel32::GetStdHandle(i -11) p .r2'
    ${If} $2 P<> 0
      FileWrite $2 "$1$\r$\n"
    ${EndIf}
  ${Else}
    MessageBox MB_OK|MB_ICONINFORMATION "$1"
  ${EndIf}
  SetErrorLevel $0
  Quit
FunctionEnd
!macroend
!insertmacro DefineRefuse ""
!insertmacro DefineRefuse "un."

!macro Refuse PREFIX CODE TEXT
  Push ${CODE}
  Push "${TEXT}"
  Call ${PREFIX}Refuse
!macroend

; Removes the next word from $CommandLine and sets $Word to it, to "" at the end.
!macro DefineNextWord PREFIX
Function ${PREFIX}NextWord
  StrCpy $Word ""
  ${Do}
    StrCpy $0 $CommandLine 1
    StrCpy $CommandLine $CommandLine "" 1
    ${If} $0 == ""
      ${Break}
    ${ElseIf} $0 != " "
      StrCpy $Word "$Word$0"
    ${ElseIf} $Word != ""
      ${Break}
    ${EndIf}
  ${Loop}
FunctionEnd
!macroend
!insertmacro DefineNextWord ""
!insertmacro DefineNextWord "un."

; ReadSwitches PREFIX HELP KNOWN: KNOWN is a macro with an ElseIf for each of our own switches. Skips those that NSIS
; reads (/S and /NCRC, in capitals only). NSIS has already removed /D= and _?=.
!macro ReadSwitches PREFIX HELP KNOWN
  ${GetParameters} $CommandLine
  ${Do}
    Call ${PREFIX}NextWord
    ${If} $Word == ""
      ${Break}
    ${ElseIf} $Word S== "/S"
    ${OrIf} $Word S== "/NCRC"
      ${Continue}
    ${ElseIf} $Word == "/HELP"
    ${OrIf} $Word == "/?"
      !insertmacro Refuse "${PREFIX}" ${CODE_SWITCHES} "${HELP}"
    !insertmacro ${KNOWN}
    ${Else}
      !insertmacro Refuse "${PREFIX}" ${CODE_SWITCHES} "Unknown switch or value: $Word$\r$\n\
          $\r$\n${HELP}"
    ${EndIf}
  ${Loop}
!macroend

; /SWITCH=yes ticks the box, /SWITCH=no unticks it.
!macro TickingSwitch SWITCH SECTION
  ${ElseIf} $Word == "/${SWITCH}=yes"
    !insertmacro SelectSection ${SECTION}
  ${ElseIf} $Word == "/${SWITCH}=no"
    !insertmacro UnselectSection ${SECTION}
!macroend
