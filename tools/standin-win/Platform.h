#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What the stand-in needs from the system, with UTF-8 paths: the Windows C
// runtime's wide-character calls on Windows, POSIX elsewhere (a native
// build only serves to check the rendering against the native tool).
namespace standin {

// Reads a whole file of at most maxBytes; false with the native tool's
// message otherwise.
bool readSmallFile(const std::string& path, std::int64_t maxBytes, std::string* bytes, std::string* error);
// Writes a temporary file beside `path` and renames it over the name.
bool writeFileAtomically(const std::string& path, const std::string& bytes, std::string* error);
void appendToFile(const std::string& path, const std::string& text);
// The variable's value as UTF-8; empty when unset.
std::string environment(const char* name);
std::int64_t processId();
void sleepMilliseconds(std::int64_t ms);
[[noreturn]] void sleepForever();
// Standard output without line-end translation.
void setBinaryOutput();

} // namespace standin

// The program: the arguments as UTF-8, the first one the program itself.
int runStandin(const std::vector<std::string>& args);
