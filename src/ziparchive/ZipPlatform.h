#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <string>

// What depends on the operating system: name encodings, folders, file times and attributes, and
// the debug log. Paths here are UTF-8.
namespace ZipPlatform {

// Process-wide choice of the 8-bit encoding of entry names: false (the default) is UTF-8, true the
// system's code page through the C locale.
void SetUseSystemCodePage(bool use);
bool GetUseSystemCodePage();

// Wide to 8-bit. Returns the length written to `buffer`; an empty input gives an empty buffer and 0.
int WideToSingle(const wchar_t* wide, std::string& buffer, bool useSystemCodePage);
// 8-bit to wide; malformed UTF-8 bytes become U+FFFD.
int SingleToWide(const std::string& single, std::wstring& buffer, bool useSystemCodePage);

// Formats a diagnostic line and hands it to the debug log, which discards it unless a sink is set.
void Trace(const char* format, ...) __attribute__((format(printf, 1, 2)));
void SetTraceSink(std::function<void(const std::string&)> sink);

// Makes the folder and its missing parents; throws CZipException when a part cannot be made.
void ForceDirectory(const std::string& path);
bool DirectoryExists(const std::string& path);
bool FileExists(const std::string& path);  // anything but a folder

void SetFileModTime(const std::string& path, time_t modified);

// Bytes an unprivileged user may still write on the file system that holds `path`, or the
// nearest existing folder above it; -1 when that cannot be told.
int64_t FreeSpace(const std::string& path);

// The archive's default: this platform's system code in "version made by".
constexpr int kSystemUnix = 3;

}  // namespace ZipPlatform
