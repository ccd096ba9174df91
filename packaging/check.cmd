@echo off
rem Proves Quillmont on this machine: a few minutes, no questions, and report.txt beside this file to send back.
rem Close Quillmont first, and leave mouse and keyboard alone while windows open and close by themselves.
cd /d "%~dp0programs"
quillmont_check.exe %*
set code=%errorlevel%
if not defined QUILLMONT_UNATTENDED pause
exit /b %code%
