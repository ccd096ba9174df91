; Closes the running program so that its file can be replaced or removed.

; In ms: the limit for closing all running programs together, and for their file to become writable after that.
!define CLOSE_TIME 30000
!define RELEASE_TIME 10000
!define PAUSE 100

; 1 if a running program was closed, so that Setup starts it again.
Var Closed
; The number of main windows.
Var Windows

; $R9 becomes the milliseconds since $R8, also when the tick count wraps around after 49 days.
!macro GetElapsed
  System::Call 'kernel32::GetTickCount() i .R9'
  IntOp $R9 $R9 - $R8
!macroend

; Inserts BODY for each main window, with the window in $0. Counts them.
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

; Pushes the process handle, or 0 if access is denied: Setup may run as another user than the program. WM_CLOSE works
; like the close box: the receiver stops and the settings are saved.
!macro AskToClose
  System::Call 'user32::GetWindowThreadProcessId(p r0, *i .r1) i .r2'
  ; SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION. Wine never denies the former alone.
  System::Call 'kernel32::OpenProcess(i 0x101000, i 0, i r1) p .r3'
  Push $3
  ; WM_CLOSE. Posted, because the program may need three seconds to stop its receiver.
  System::Call 'user32::PostMessageW(p r0, i 16, p 0, p 0) i .r2'
!macroend

!macro OnlyCount
!macroend

; Asks every running Quillmont of this session once to close, and waits until the windows and then the processes are
; gone: the file can be replaced only after the process has ended. A window that is gone counts as closed, even if its
; process could not be opened. Waits CLOSE_TIME at most; EnsureWritable then checks the result.
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

; $0 becomes 1 if the program's file can be written. Retries for RELEASE_TIME: a process that could not be opened may
; still be ending, and a virus scanner may have the file open. Does not retry while a window is still open, since
; CloseProgram has already waited for it.
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

; Quits with code 2 if the old program cannot be replaced: it may run in another user's session.
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
; A program that was closed in this session is started again first.
!insertmacro EnsureWritable "" "Call RestartProgram"
!insertmacro EnsureWritable "un." ""

; Through Explorer, since Setup may run elevated or as another user and the program must not.
Function StartProgram
  Exec '"$WINDIR\explorer.exe" "$INSTDIR\${PROGRAM}"'
FunctionEnd

Function RestartProgram
  ${If} $Closed == 1
    Call StartProgram
  ${EndIf}
FunctionEnd
