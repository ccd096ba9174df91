@echo off
rem Checks Quillmont on this machine and writes report.txt next to this file. See READ-ME.txt.
if exist "%~dp0programs\quillmont_check.exe" goto unpacked
echo The zip has not been unpacked: right-click it, choose "Extract All...", and start check.cmd in the new folder.
set code=2
goto end
:unpacked
rem pushd, not cd: cmd cannot change to a folder on a network share, while pushd gives it a drive letter.
pushd "%~dp0programs"
quillmont_check.exe %*
set code=%errorlevel%
popd
:end
if not defined QUILLMONT_UNATTENDED pause
exit /b %code%
