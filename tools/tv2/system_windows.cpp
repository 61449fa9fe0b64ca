#include "tools/tv2/system.h"

#include "tev2_loader/io/detail/windows_path.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <io.h>

namespace tv2
{

using tev2_exporter::ErrnoOfLastError;
using TEV2_LOADER::Status;

std::string ModuleFileName(const std::string& name)
{
    return name + ".dll";
}

std::string ProgramPath()
{
    std::string path(32768, '\0');
    path.resize(GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

bool ErrorsGoToTerminal()
{
    return _isatty(_fileno(stderr)) != 0;
}

std::size_t TerminalColumns(Stream stream)
{
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    const HANDLE file = GetStdHandle(stream == Stream::kOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    const bool known = GetConsoleScreenBufferInfo(file, &screen) != 0;
    const int columns = screen.srWindow.Right - screen.srWindow.Left + 1;
    return known && columns > 1 ? static_cast<std::size_t>(columns) : 80;
}

std::size_t OutputColumns()
{
    return _isatty(_fileno(stdout)) != 0 ? TerminalColumns(Stream::kOutput) : 0;
}

// Handles of this system are never given out twice.
void KeepStandardStreams() {}

// There is no signal for it here.
void SurviveClosedPipes() {}

Status ReadStandardInput(std::vector<std::uint8_t>& bytes)
{
    constexpr std::size_t kMostInput = 0xFFFFFFFF; // no scene is larger
    constexpr std::size_t kPiece = 1 << 16;
    _setmode(_fileno(stdin), _O_BINARY);
    while (true)
    {
        const std::size_t before = bytes.size();
        bytes.resize(before + kPiece);
        const std::size_t got = std::fread(bytes.data() + before, 1, kPiece, stdin);
        bytes.resize(before + got);
        if (got == 0)
            return std::ferror(stdin) != 0 ? Status::Failure(std::strerror(EIO)) : Status();
        if (bytes.size() > kMostInput)
            return Status::Failure(std::strerror(EFBIG));
    }
}

int MakeWritable(const std::string& path)
{
    const std::wstring wide = TEV2_LOADER::file_system::WidePath(path);
    const DWORD attributes = GetFileAttributesW(wide.c_str());
    const bool made = attributes != INVALID_FILE_ATTRIBUTES &&
                      SetFileAttributesW(wide.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    return made ? 0 : ErrnoOfLastError();
}

std::string WhyNotWritable(const std::string& path, std::uint64_t bytes)
{
    const FileStamp stamp = FileStamp::Of(path);
    if (const int obstacle = stamp.exists ? ObstacleToWriting(path) : 0; obstacle != 0)
        return std::strerror(obstacle);
    const std::string::size_type separator = path.find_last_of("/\\");
    const std::string folder = separator == std::string::npos ? "." : path.substr(0, separator + 1);
    ULARGE_INTEGER left{};
    // What a quota leaves to this user.
    const bool full = GetDiskFreeSpaceExA(folder.c_str(), &left, nullptr, nullptr) && left.QuadPart < bytes;
    return full ? std::strerror(ENOSPC) : std::string();
}

// The temporary folder is the user's own.
Status MakePrivateFolder(std::string& path)
{
    std::error_code error;
    const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
    if (error)
        return Status::Failure("the temporary folder: " + error.message());
    for (unsigned number = 0; number < 10'000; ++number)
    {
        const std::string name =
            "tv2." + std::to_string(GetCurrentProcessId()) + '.' + std::to_string(number);
        if (std::filesystem::create_directory(parent / name, error))
        {
            path = (parent / name).string();
            return {};
        }
        if (error)
            break;
    }
    return Status::Failure("the temporary folder: " + error.message());
}

Status OpenInBrowser(const std::string& absolute_path)
{
    const std::wstring wide = TEV2_LOADER::file_system::WidePath(absolute_path);
    const HINSTANCE opened = ShellExecuteW(nullptr, L"open", wide.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    constexpr INT_PTR kMostErrors = 32; // larger numbers are success
    return reinterpret_cast<INT_PTR>(opened) > kMostErrors ? Status()
                                                           : Status::Failure("Windows found no browser");
}

std::size_t ProcessorCount()
{
    SYSTEM_INFO system{};
    GetSystemInfo(&system);
    return std::max<std::size_t>(system.dwNumberOfProcessors, 1);
}

namespace
{

std::atomic<int> interruption = 0;

// On a thread of the system's.
BOOL WINAPI NoteInterruption(DWORD)
{
    return interruption.exchange(SIGINT) == 0;
}

} // namespace

void CatchInterruptions()
{
    SetConsoleCtrlHandler(NoteInterruption, TRUE);
}

int Interruption()
{
    return interruption;
}

void EndInterrupted()
{
    ExitProcess(0xC000013A);
}

void ReportFileSizeLimit() {} // there is none

} // namespace tv2
