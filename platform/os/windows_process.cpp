// The command line, the abnormal end and the tar program on Windows.

#include <windows.h>
// After windows.h, whose types it uses.
#include <shellapi.h>

#include <cstdlib>
#include <exception>
#include <memory>

#include "platform/os/os.h"
#include "platform/os/windows_api.h"

namespace os {
namespace {

UINT codePageAtStart = 0;

void restoreCodePage() {
    ::SetConsoleOutputCP(codePageAtStart);
}

/// What the program prints is UTF-8; the console shows it so until the program ends.
void makeConsoleShowUtf8() {
    codePageAtStart = ::GetConsoleOutputCP();
    if (codePageAtStart == 0 || codePageAtStart == CP_UTF8) return;
    if (::SetConsoleOutputCP(CP_UTF8)) static_cast<void>(std::atexit(restoreCodePage));
}

/// Ends the process as std::abort does, with its exit status, but without its words.
[[noreturn]] void endQuietly() {
    constexpr UINT abnormalEnd = 3;
    ::TerminateProcess(::GetCurrentProcess(), abnormalEnd);
    std::_Exit(abnormalEnd);  // for the compiler: the line above does not return
}

}  // namespace

std::vector<std::string> commandLine(int count, char** words) {
    makeConsoleShowUtf8();
    int wideCount = 0;
    const std::unique_ptr<LPWSTR, HLOCAL (*)(HLOCAL)> wideWords(
        reinterpret_cast<LPWSTR*>(::CommandLineToArgvW(::GetCommandLineW(), &wideCount)), ::LocalFree);
    if (!wideWords) return {words, words + count};
    std::vector<std::string> list;
    for (int i = 0; i < wideCount; ++i) list.push_back(windows::narrow(wideWords.get()[i]));
    return list;
}

void silenceAbnormalEnd() {
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    std::set_terminate(endQuietly);
}

int unpackTar(const std::string& programDirectory, const std::string& directory, const std::string& archive) {
    const std::string line = "\"\"" + programDirectory + "/tar.exe\" --force-local -C \"" + directory +
                             "\" -xvf \"" + archive + "\"\" > nul";
    // The wide form of `system`: the same line to the same interpreter, whatever the code page.
    return ::_wsystem(windows::wide(line).c_str());
}

}  // namespace os
