; Closing a program that runs, so that its file can be replaced or removed.

; How long all running programs together may take to close, and how long Windows then may hold the file, in ms.
!define CLOSE_TIME 30000
!define RELEASE_TIME 10000
!define PAUSE 100

; 1 when a running program was closed: it is started again.
Var Closed
; How many main windows there are.
Var Windows

; $R9 becomes the milliseconds since $R8. Right across the clock's turn after 49 days.
!macro GetElapsed
  System::Call 'kernel32::GetTickCount() i .R9'
  IntOp $R9 $R9 - $R8
!macroend

; For each main window: BODY, with the window in $0. Counts them.
!macro ForEachWindow BODY
  StrCpy $Windows 0
  StrCpy $0 0
  ${Do}
    FindWindow $0 "SNMP_MAIN_WND" "" 0 $0
    ${If} $0 P= 0
      ${Break}
    ${EndIf}
    IntOp $Windows $Windows + 1
    !insertmacro ${BODY}
  ${Loop}
!macroend

; Leaves the process on the stack, 0 when it may not be opened: it can be another user's, when setup was given other
; credentials. It answers to WM_CLOSE as to its close box: the receiver stops and the settings are saved.
!macro AskToClose
  System::Call 'user32::GetWindowThreadProcessId(p r0, *i .r1) i .r2'
  ; SYNCHRONIZE, and PROCESS_QUERY_LIMITED_INFORMATION, since Wine grants the former to everybody.
  System::Call 'kernel32::OpenProcess(i 0x101000, i 0, i r1) p .r3'
  Push $3
  ; WM_CLOSE, posted: the program may take three seconds to stop its receiver.
  System::Call 'user32::PostMessageW(p r0, i 16, p 0, p 0) i .r2'
!macroend

!macro OnlyCount
!macroend

; Asks every running Quillmont of this session to close, once, and waits until the windows and then the processes are
; gone: the file can be replaced only after the process. A window that is gone counts as closed, whether or not its
; process could be watched. All of it takes CLOSE_TIME at most, whoever hangs; whether it was enough, EnsureWritable
; finds out.
!macro CloseProgram PREFIX
Function ${PREFIX}CloseProgram
  System::Call 'kernel32::GetTickCount() i .R8'
  !insertmacro ForEachWindow AskToClose
  ${If} $Windows = 0
    Return
  ${EndIf}
  DetailPrint "Closing ${NAME}..."
  StrCpy $R7 $Windows
  ${Do}
    !insertmacro ForEachWindow OnlyCount
    !insertmacro GetElapsed
    ${If} $Windows = 0
    ${OrIf} $R9 >= ${CLOSE_TIME}
      ${Break}
    ${EndIf}
    Sleep ${PAUSE}
  ${Loop}
  ${If} $Windows < $R7
    StrCpy $Closed 1
  ${EndIf}
  ${For} $R6 1 $R7
    Pop $3
    ${If} $3 P<> 0
      !insertmacro GetElapsed
      IntOp $2 ${CLOSE_TIME} - $R9
      ${If} $2 > 0
        System::Call 'kernel32::WaitForSingleObject(p r3, i r2) i .r1'
      ${EndIf}
      System::Call 'kernel32::CloseHandle(p r3)'
    ${EndIf}
  ${Next}
FunctionEnd
!macroend
!insertmacro CloseProgram ""
!insertmacro CloseProgram "un."

; $0 becomes 1 when the program's file can be written. Tries again for RELEASE_TIME: a process that could not be
; watched may still be ending, and a virus scanner may have the file open. Not when a window is still there: that has
; been waited for.
!macro WaitUntilWritable PREFIX
Function ${PREFIX}WaitUntilWritable
  System::Call 'kernel32::GetTickCount() i .R8'
  ${Do}
    ClearErrors
    FileOpen $1 "$INSTDIR\${PROGRAM}" a
    ${IfNot} ${Errors}
      FileClose $1
      StrCpy $0 1
      Return
    ${EndIf}
    !insertmacro GetElapsed
    ${If} $Windows > 0
    ${OrIf} $R9 >= ${RELEASE_TIME}
      StrCpy $0 0
      Return
    ${EndIf}
    Sleep ${PAUSE}
  ${Loop}
FunctionEnd
!macroend
!insertmacro WaitUntilWritable ""
!insertmacro WaitUntilWritable "un."

; Ends with code 2 when the old program cannot be replaced: somebody else's session may run it.
!macro EnsureWritable PREFIX BEFORE_LEAVING
Function ${PREFIX}EnsureWritable
  ${IfNot} ${FileExists} "$INSTDIR\${PROGRAM}"
    Return
  ${EndIf}
  Call ${PREFIX}WaitUntilWritable
  ${If} $0 == 0
    ${BEFORE_LEAVING}
    MessageBox MB_OK|MB_ICONSTOP "${PROGRAM} is in use and cannot be replaced or removed. Close ${NAME} in every \
        session of this computer, then try again." /SD IDOK
    SetErrorLevel ${CODE_IN_USE}
    Quit
  ${EndIf}
FunctionEnd
!macroend
; What was closed in this session receives again, whatever keeps the file.
!insertmacro EnsureWritable "" "Call RestartProgram"
!insertmacro EnsureWritable "un." ""

; Through the desktop's own shell: setup runs elevated, perhaps as another user; the program shall not.
Function StartProgram
  Exec '"$WINDIR\explorer.exe" "$INSTDIR\${PROGRAM}"'
FunctionEnd

Function RestartProgram
  ${If} $Closed == 1
    Call StartProgram
  ${EndIf}
FunctionEnd
