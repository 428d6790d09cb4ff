#include "Platform.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace standin {

namespace {

#ifdef _WIN32
std::wstring widen(const std::string& text)
{
    if (text.empty())
        return {};
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(), size);
    return wide;
}

std::string narrow(const wchar_t* text)
{
    if (!text || !*text)
        return {};
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
    utf8.resize(static_cast<std::size_t>(size > 0 ? size - 1 : 0));
    return utf8;
}

std::FILE* openFile(const std::string& path, const wchar_t* mode)
{
    return _wfopen(widen(path).c_str(), mode);
}

bool isDirectory(const std::string& path)
{
    struct _stat64 info { };
    return _wstat64(widen(path).c_str(), &info) == 0 && (info.st_mode & _S_IFDIR);
}

bool exists(const std::string& path)
{
    struct _stat64 info { };
    return _wstat64(widen(path).c_str(), &info) == 0;
}

bool replaceFile(const std::string& from, const std::string& to)
{
    return MoveFileExW(widen(from).c_str(), widen(to).c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

void removeFile(const std::string& path)
{
    _wremove(widen(path).c_str());
}
#else
std::FILE* openFile(const std::string& path, const wchar_t* mode)
{
    return std::fopen(path.c_str(), mode[0] == L'r' ? "rb" : mode[0] == L'a' ? "ab" : "wb");
}

bool isDirectory(const std::string& path)
{
    struct stat info { };
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool exists(const std::string& path)
{
    struct stat info { };
    return ::stat(path.c_str(), &info) == 0;
}

bool replaceFile(const std::string& from, const std::string& to)
{
    return std::rename(from.c_str(), to.c_str()) == 0;
}

void removeFile(const std::string& path)
{
    std::remove(path.c_str());
}
#endif

} // namespace

bool readSmallFile(const std::string& path, std::int64_t maxBytes, std::string* bytes, std::string* error)
{
    if (path.empty() || !exists(path)) {
        *error = "file not found: \"" + path + "\"";
        return false;
    }
    if (isDirectory(path)) {
        *error = "\"" + path + "\" is a directory";
        return false;
    }
    std::FILE* file = openFile(path, L"rb");
    if (!file) {
        *error = "cannot read \"" + path + "\"";
        return false;
    }
    bytes->clear();
    char buffer[65536];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
        bytes->append(buffer, got);
        if (static_cast<std::int64_t>(bytes->size()) > maxBytes)
            break;
    }
    const bool failed = std::ferror(file) != 0;
    std::fclose(file);
    if (failed) {
        *error = "cannot read \"" + path + "\"";
        return false;
    }
    if (static_cast<std::int64_t>(bytes->size()) > maxBytes) {
        *error = "\"" + path + "\" is too large";
        return false;
    }
    return true;
}

bool writeFileAtomically(const std::string& path, const std::string& bytes, std::string* error)
{
    const std::string temporary = path + ".standin-" + std::to_string(processId());
    std::FILE* file = openFile(temporary, L"wb");
    if (!file) {
        *error = "cannot write \"" + path + "\"";
        return false;
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed || !replaceFile(temporary, path)) {
        removeFile(temporary);
        *error = "cannot write \"" + path + "\"";
        return false;
    }
    return true;
}

void appendToFile(const std::string& path, const std::string& text)
{
    if (std::FILE* file = openFile(path, L"ab")) {
        std::fwrite(text.data(), 1, text.size(), file);
        std::fclose(file);
    }
}

std::string environment(const char* name)
{
#ifdef _WIN32
    return narrow(_wgetenv(widen(name).c_str()));
#else
    const char* value = std::getenv(name);
    return value ? value : "";
#endif
}

std::int64_t processId()
{
#ifdef _WIN32
    return static_cast<std::int64_t>(GetCurrentProcessId());
#else
    return static_cast<std::int64_t>(::getpid());
#endif
}

void sleepMilliseconds(std::int64_t ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void sleepForever()
{
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

void setBinaryOutput()
{
#ifdef _WIN32
    _setmode(_fileno(stdout), _O_BINARY);
#endif
}

} // namespace standin

#ifdef _WIN32
int wmain(int argc, wchar_t** argv)
{
    std::vector<std::string> args;
    for (int i = 0; i < argc; ++i)
        args.push_back(standin::narrow(argv[i]));
    return runStandin(args);
}
#else
int main(int argc, char** argv)
{
    return runStandin(std::vector<std::string>(argv, argv + argc));
}
#endif
