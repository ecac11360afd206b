#include <meridex/platform/StartedProgram.h>

#include <windows.h>

#include <meridex/platform/windows/WideText.h>

namespace meridex {
namespace {

HANDLE AsHandle(std::intptr_t id) { return reinterpret_cast<HANDLE>(id); }

// One argument quoted the way the C runtime splits a command line.
std::wstring Quoted(const std::wstring& argument) {
    if (!argument.empty() && argument.find_first_of(L" \t\"") == std::wstring::npos) return argument;
    std::wstring quoted = L"\"";
    std::size_t slashes = 0;
    for (wchar_t c : argument) {
        if (c == L'\\') {
            ++slashes;
            continue;
        }
        quoted.append(c == L'"' ? slashes * 2 + 1 : slashes, L'\\');
        slashes = 0;
        quoted += c;
    }
    quoted.append(slashes * 2, L'\\');
    return quoted + L"\"";
}

}  // namespace

StartedProgram StartedProgram::Start(const std::string& path, const std::vector<std::string>& arguments) {
    StartedProgram program;
    const std::wstring application = Wide::FromUtf8(path);
    std::wstring commandLine = Quoted(application);
    for (const std::string& argument : arguments) commandLine += L" " + Quoted(Wide::FromUtf8(argument));

    // A hidden window, no console, and nothing of this program's handles.
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_HIDE;
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(application.c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                          CREATE_NO_WINDOW | CREATE_NEW_PROCESS_GROUP, nullptr, nullptr, &startup, &process))
        return program;
    ::CloseHandle(process.hThread);
    program.id_ = reinterpret_cast<std::intptr_t>(process.hProcess);
    return program;
}

bool StartedProgram::HasEnded() {
    if (id_ == 0) return true;
    if (::WaitForSingleObject(AsHandle(id_), 0) == WAIT_TIMEOUT) return false;
    ::CloseHandle(AsHandle(id_));
    id_ = 0;
    return true;
}

void StartedProgram::End(std::chrono::milliseconds grace) {
    if (id_ == 0) return;
    const DWORD wait = static_cast<DWORD>(grace.count() < 0 ? 0 : grace.count());
    if (::WaitForSingleObject(AsHandle(id_), wait) == WAIT_TIMEOUT) {
        ::TerminateProcess(AsHandle(id_), 1);
        ::WaitForSingleObject(AsHandle(id_), INFINITE);
    }
    ::CloseHandle(AsHandle(id_));
    id_ = 0;
}

}  // namespace meridex
