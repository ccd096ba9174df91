#include "tests/kit/child_process.h"

#include <utility>

#include "tests/support/start_with_retries.h"

namespace {

// The file is deleted when its handles are closed. A pipe would have to be read while the program runs.
ScopedHandle MakeOutputFile() {
    wchar_t folder[MAX_PATH] = {};
    wchar_t path[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"qlm", 0, path);
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    return ScopedHandle(CreateFileW(
        path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
}

std::string ReadFromStart(HANDLE file) {
    std::string octets(static_cast<size_t>(GetFileSize(file, nullptr)), '\0');
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    DWORD size = 0;
    ReadFile(file, octets.data(), static_cast<DWORD>(octets.size()), &size, nullptr);
    octets.resize(size);
    return octets;
}

// Its processes are terminated when its last handle is closed, even if the check is killed.
ScopedHandle MakeJob() {
    ScopedHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

}  // namespace

ProgramResult RunProgram(const std::wstring& commandLine, const std::wstring& folder, DWORD milliseconds) {
    ProgramResult result;
    const ScopedHandle output = MakeOutputFile();
    const ScopedHandle job = MakeJob();
    if (!output || !job) {
        result.ending = "its output file or its job could not be created";
        return result;
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output.get();
    startup.hStdError = output.get();
    PROCESS_INFORMATION started = {};
    const DWORD error = StartWithRetries([&] {
        std::wstring writable = commandLine;
        return CreateProcessW(nullptr, writable.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                              folder.c_str(), &startup, &started);
    });
    if (error != ERROR_SUCCESS) {
        result.ending = "it could not be started, error " + std::to_string(error);
        return result;
    }
    const ScopedHandle process(started.hProcess);
    const ScopedHandle thread(started.hThread);
    AssignProcessToJobObject(job.get(), process.get());
    ResumeThread(thread.get());
    if (WaitForSingleObject(process.get(), milliseconds) == WAIT_OBJECT_0) {
        DWORD code = 0;
        GetExitCodeProcess(process.get(), &code);
        result.exitCode = code;
        result.ending = "code " + std::to_string(code);
    } else {
        result.ending = "it was terminated at its time limit";
        TerminateJobObject(job.get(), 99);
        WaitForSingleObject(process.get(), 10'000);
    }
    result.output = ReadFromStart(output.get());
    return result;
}
