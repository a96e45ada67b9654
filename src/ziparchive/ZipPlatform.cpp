#include "ziparchive/ZipPlatform.h"

#include "ziparchive/CZipException.h"

#include <atomic>
#include <cassert>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/time.h>
#include <vector>

namespace ZipPlatform {

namespace {

std::atomic<bool> g_useSystemCodePage{false};

std::mutex& SinkMutex()
{
    static std::mutex mutex;
    return mutex;
}

std::function<void(const std::string&)>& Sink()
{
    static std::function<void(const std::string&)> sink;
    return sink;
}

// Entry names are the keys of an archive, so their UTF-8 codec is the layer's own rather than the
// string classes' (which go through Qt): every byte of a stored name must come back as a character
// (Qt's decoder drops a leading U+FEFF), a malformed byte as one U+FFFD so that a name is never
// cut, and a wide character without a UTF-8 form is written as U+FFFD, never as "?".
void AppendUtf8(std::string& out, uint32_t c)
{
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
        c = 0xFFFD;
    if (c < 0x80) {
        out += char(c);
    } else if (c < 0x800) {
        out += char(0xC0 | (c >> 6));
        out += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += char(0xE0 | (c >> 12));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    } else {
        out += char(0xF0 | (c >> 18));
        out += char(0x80 | ((c >> 12) & 0x3F));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    }
}

// One code point from `s` at `i`, advancing `i`; malformed input gives U+FFFD and skips one byte.
uint32_t NextUtf8(const std::string& s, size_t& i)
{
    const auto lead = static_cast<unsigned char>(s[i]);
    size_t trail;
    uint32_t c;
    uint32_t minimum;
    if (lead < 0x80) {
        ++i;
        return lead;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
        trail = 1, c = lead & 0x1F, minimum = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        trail = 2, c = lead & 0x0F, minimum = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        trail = 3, c = lead & 0x07, minimum = 0x10000;
    } else {
        ++i;
        return 0xFFFD;
    }
    if (s.size() - i <= trail) {
        ++i;
        return 0xFFFD;
    }
    for (size_t k = 1; k <= trail; ++k) {
        const auto next = static_cast<unsigned char>(s[i + k]);
        if ((next & 0xC0) != 0x80) {
            ++i;
            return 0xFFFD;
        }
        c = (c << 6) | (next & 0x3F);
    }
    if (c < minimum || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
        ++i;
        return 0xFFFD;
    }
    i += trail + 1;
    return c;
}

}  // namespace

void SetUseSystemCodePage(bool use)
{
    g_useSystemCodePage = use;
}
bool GetUseSystemCodePage()
{
    return g_useSystemCodePage;
}

int WideToSingle(const wchar_t* wide, std::string& buffer, bool useSystemCodePage)
{
    buffer.clear();
    const size_t measure = wide ? std::wcslen(wide) : 0;
    if (measure == 0)
        return 0;
    if (useSystemCodePage) {
        std::mbstate_t state{};
        const wchar_t* source = wide;
        const size_t needed = std::wcsrtombs(nullptr, &source, 0, &state);
        if (needed != size_t(-1)) {
            buffer.resize(needed);
            state = std::mbstate_t{};
            source = wide;
            std::wcsrtombs(buffer.data(), &source, needed, &state);
        }
    }
    if (buffer.empty()) {
        for (size_t i = 0; i < measure; ++i)
            AppendUtf8(buffer, uint32_t(wide[i]));
    }
    const int iLen = int(buffer.size());
    assert((iLen != 0));
    return iLen;
}

int SingleToWide(const std::string& single, std::wstring& buffer, bool useSystemCodePage)
{
    buffer.clear();
    if (single.empty())
        return 0;
    if (useSystemCodePage) {
        std::mbstate_t state{};
        const char* source = single.c_str();
        const size_t needed = std::mbsrtowcs(nullptr, &source, 0, &state);
        if (needed != size_t(-1)) {
            buffer.resize(needed);
            state = std::mbstate_t{};
            source = single.c_str();
            std::mbsrtowcs(buffer.data(), &source, needed, &state);
            return int(buffer.size());
        }
    }
    for (size_t i = 0; i < single.size();)
        buffer += wchar_t(NextUtf8(single, i));
    return int(buffer.size());
}

void Trace(const char* format, ...)
{
    std::lock_guard<std::mutex> lock(SinkMutex());
    if (!Sink())
        return;
    va_list args;
    va_start(args, format);
    char line[1024];
    std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    Sink()(line);
}

void SetTraceSink(std::function<void(const std::string&)> sink)
{
    std::lock_guard<std::mutex> lock(SinkMutex());
    Sink() = std::move(sink);
}

bool DirectoryExists(const std::string& path)
{
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool FileExists(const std::string& path)
{
    struct stat info;
    return ::lstat(path.c_str(), &info) == 0 && !S_ISDIR(info.st_mode);
}

void ForceDirectory(const std::string& path)
{
    if (path.empty() || DirectoryExists(path))
        return;
    size_t cut = path.find_last_of('/');
    if (cut != std::string::npos && cut > 0)
        ForceDirectory(path.substr(0, cut));
    if (::mkdir(path.c_str(), 0777) != 0 && !(errno == EEXIST && DirectoryExists(path)))
        CZipException::ThrowErrno(errno, path);
}

void SetFileModTime(const std::string& path, time_t modified)
{
    struct timespec times[2];
    times[0].tv_sec = modified;
    times[0].tv_nsec = 0;
    times[1] = times[0];
    // A time that cannot be set is not worth failing an extraction for.
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);
}

}  // namespace ZipPlatform

int64_t ZipPlatform::FreeSpace(const std::string& path)
{
    std::string probe = path.empty() ? std::string(".") : path;
    for (;;) {
        struct statvfs status;
        if (::statvfs(probe.c_str(), &status) == 0)
            return int64_t(status.f_bavail) * int64_t(status.f_frsize);
        const size_t slash = probe.find_last_of('/');
        if (slash == std::string::npos || probe == "/")
            return -1;
        probe = slash == 0 ? std::string("/") : probe.substr(0, slash);
    }
}
