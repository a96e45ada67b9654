#include "foundation/ZoltaFileStreams.h"

#include "foundation/CZoltaDirectoryPath.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <zlib.h>

#include <cstdio>
#include <stdio.h>

#include <sys/stat.h>

#include <algorithm>

namespace {

int ToStdioOrigin(std::uint32_t origin)
{
    switch (origin) {
    case STREAM_SEEK_CUR:
        return SEEK_CUR;
    case STREAM_SEEK_END:
        return SEEK_END;
    default:
        return SEEK_SET;  // unknown origins count from the start
    }
}

// The whole content of a file; false when it cannot be read completely.
bool ReadWholeFile(const CZoltaFilePath& path, std::vector<std::uint8_t>& out)
{
    out.clear();
    std::FILE* file = OpenFile(path, "rb");
    if (!file)
        return false;
    bool ok = std::fseek(file, 0, SEEK_END) == 0;
    const long long size = ok ? ftello(file) : -1;
    ok = ok && size >= 0 && std::fseek(file, 0, SEEK_SET) == 0;
    if (ok) {
        out.resize(static_cast<std::size_t>(size));
        ok = out.empty() || std::fread(out.data(), 1, out.size(), file) == out.size();
    }
    std::fclose(file);
    return ok;
}

bool WriteWholeFile(const CZoltaFilePath& path, const std::uint8_t* data, std::size_t size)
{
    std::FILE* file = OpenFile(path, "wb");
    if (!file)
        return false;
    const bool written = size == 0 || std::fwrite(data, 1, size, file) == size;
    const bool closed = std::fclose(file) == 0;
    return written && closed;
}

bool CompressFileInto(const CZoltaFilePath& raw, const CZoltaFilePath& target)
{
    std::vector<std::uint8_t> content;
    if (!ReadWholeFile(raw, content))
        return false;
    uLongf compressedSize = compressBound(static_cast<uLong>(content.size()));
    std::vector<std::uint8_t> compressed(compressedSize);
    if (compress(compressed.data(), &compressedSize, content.data(), static_cast<uLong>(content.size())) != Z_OK)
        return false;
    return WriteWholeFile(target, compressed.data(), compressedSize);
}

bool FolderOfFileExists(const CZoltaFilePath& path)
{
    const CZoltaDirectoryPath folder = path.GetFolder();
    return folder.IsEmpty() || folder.Exists();  // a bare name lives in the working folder
}

template <class Stream>
CComPtr<IStream> AdoptIfValid(Stream* stream)
{
    CComPtr<IStream> holder;
    holder.Attach(stream);
    if (!stream->IsValid())
        holder.Release();
    return holder;
}

std::uint64_t JoinHalves(std::uint32_t low, std::uint32_t high)
{
    return (static_cast<std::uint64_t>(high) << 32) | low;
}

}  // namespace

// ---- CStdioFileStream ----

CStdioFileStream::CStdioFileStream(const CZoltaFilePath& path, const char* mode, std::uint64_t startPosition)
    : m_path(path),
      m_position(startPosition)
{
    if (!m_path.IsEmpty())
        m_file = OpenFile(m_path, mode);
    // Documents are written a name or a value at a time: few large writes, not thousands.
    if (m_file)
        std::setvbuf(m_file, nullptr, _IOFBF, 64 * 1024);
    m_valid = m_file != nullptr;
}

CStdioFileStream::~CStdioFileStream()
{
    if (m_file)
        std::fclose(m_file);
}

HRESULT CStdioFileStream::Read(void* buffer, std::uint32_t size, std::uint32_t* outRead)
{
    if (!buffer || !outRead || !m_file)
        return E_FAIL;
    const std::size_t count = std::fread(buffer, 1, size, m_file);
    *outRead = static_cast<std::uint32_t>(count);
    m_position += count;
    return count == 0 ? S_FALSE : S_OK;
}

HRESULT CStdioFileStream::Write(const void* data, std::uint32_t size, std::uint32_t* outWritten)
{
    if (outWritten)
        *outWritten = 0;
    if (!m_file || (!data && size != 0)) {
        m_writeFailed = true;
        return E_FAIL;
    }
    // The stream is this object's alone: no other thread locks it.
    const std::size_t count = size == 0 ? 0 : ::fwrite_unlocked(data, 1, size, m_file);
    if (outWritten)
        *outWritten = static_cast<std::uint32_t>(count);
    m_position += count;
    if (count != size) {
        m_writeFailed = true;
        return E_FAIL;
    }
    return S_OK;
}

HRESULT CStdioFileStream::Seek(LARGE_INTEGER offset, std::uint32_t origin, ULARGE_INTEGER* outPosition)
{
    if (!m_file)
        return E_FAIL;
    if (fseeko(m_file, static_cast<off_t>(offset.Quad()), ToStdioOrigin(origin)) != 0)
        return E_FAIL;
    const off_t position = ftello(m_file);
    if (position >= 0)
        m_position = static_cast<std::uint64_t>(position);
    if (outPosition)
        *outPosition = MakeULargeInteger(position >= 0 ? static_cast<std::uint64_t>(position) : 0);
    return S_OK;
}

HRESULT CStdioFileStream::Stat(STATSTG* outStat, std::uint32_t)
{
    if (!outStat || !m_file)
        return E_FAIL;
    // Buffered bytes count as part of the size.
    std::fflush(m_file);
    struct stat info {};
    if (fstat(fileno(m_file), &info) != 0)
        return E_FAIL;
    outStat->cbSize = MakeULargeInteger(static_cast<std::uint64_t>(info.st_size));
    return S_OK;
}

HRESULT CStdioFileStream::GetWriteStatus() const
{
    if (!m_valid || m_writeFailed)
        return E_FAIL;
    // A full disk often shows only when the buffered bytes go out.
    if (m_file && (std::fflush(m_file) != 0 || std::ferror(m_file)))
        return E_FAIL;
    return S_OK;
}

CReadableStreamOnFile::CReadableStreamOnFile(const CZoltaFilePath& path)
    : CStdioFileStream(path, "rb", 0)
{}

CWritableFileStream::CWritableFileStream(const CZoltaFilePath& path, std::uint64_t startPosition)
    : CStdioFileStream(path, "w+b", startPosition)
{}

// ---- CWritableCompressedFileStream ----

CWritableCompressedFileStream::CWritableCompressedFileStream(const CZoltaFilePath& target, std::uint64_t startPosition)
    : m_start(startPosition),
      m_target(target)
{
    if (m_target.IsEmpty() || !FolderOfFileExists(m_target))
        return;
    // Prove early that the target can be written, before any data is collected for it.
    std::FILE* probe = OpenFile(m_target, "wb");
    if (!probe)
        return;
    std::fclose(probe);

    m_rawPath = MakeTempFile(CAtlString(L".rawstream"), CAtlString(L"SCVTemp"));
    if (m_rawPath.IsEmpty())
        return;
    m_inner.Attach(new CWritableFileStream(m_rawPath, m_start));
    m_valid = m_inner->IsValid();
}

CWritableCompressedFileStream::~CWritableCompressedFileStream()
{
    Close();
}

void CWritableCompressedFileStream::Close()
{
    const bool opened = m_valid;
    m_inner.Release();  // flushes and closes the raw file
    m_valid = false;
    if (!opened)
        return;
    // Closing happens in the destructor, which has no one to tell: the copies are best effort.
    if (!m_failed || !m_rawPath.Exists())
        static_cast<void>(m_target.CopyTo(m_rawPath));
    if (m_target.Exists() && !CompressFileInto(m_rawPath, m_target))
        static_cast<void>(m_rawPath.CopyTo(m_target));
    m_rawPath.Remove();
}

HRESULT CWritableCompressedFileStream::Read(void* buffer, std::uint32_t size, std::uint32_t* outRead)
{
    return m_inner ? m_inner->Read(buffer, size, outRead) : E_FAIL;
}

HRESULT CWritableCompressedFileStream::Write(const void* data, std::uint32_t size, std::uint32_t* outWritten)
{
    if (!m_inner)
        return E_FAIL;
    const HRESULT result = m_inner->Write(data, size, outWritten);
    if (size != 0)
        m_failed = true;
    return result;
}

HRESULT CWritableCompressedFileStream::Seek(LARGE_INTEGER offset, std::uint32_t origin, ULARGE_INTEGER* outPosition)
{
    return m_inner ? m_inner->Seek(offset, origin, outPosition) : E_FAIL;
}

HRESULT CWritableCompressedFileStream::Stat(STATSTG* outStat, std::uint32_t flags)
{
    return m_inner ? m_inner->Stat(outStat, flags) : E_FAIL;
}

HRESULT CWritableCompressedFileStream::GetWriteStatus() const
{
    return m_inner ? m_inner->GetWriteStatus() : E_FAIL;
}

// ---- factories ----

CComPtr<IStream> OpenReadStream(const CZoltaFilePath& path)
{
    return AdoptIfValid(new CReadableStreamOnFile(path));
}

CComPtr<IStream> CreateWriteStream(const CZoltaFilePath& path, std::uint32_t startLow, std::uint32_t startHigh)
{
    if (path.IsEmpty())
        return {};
    return AdoptIfValid(new CWritableFileStream(path, JoinHalves(startLow, startHigh)));
}

CComPtr<IStream> CreateCompressedWriteStream(const CZoltaFilePath& path, std::uint32_t startLow,
                                             std::uint32_t startHigh)
{
    if (path.IsEmpty())
        return {};
    return AdoptIfValid(new CWritableCompressedFileStream(path, JoinHalves(startLow, startHigh)));
}

HRESULT ReadCompressedFile(const CZoltaFilePath& path, std::vector<std::uint8_t>& outData)
{
    outData.clear();
    std::vector<std::uint8_t> compressed;
    if (!ReadWholeFile(path, compressed))
        return E_FAIL;

    // The original size is not stored: guess, and grow while zlib says the room was short. The
    // bound keeps a hostile file from asking for unlimited memory.
    constexpr std::size_t kLargestResult = std::size_t{1} << 30;
    std::size_t room = std::max<std::size_t>(compressed.size() * 4, 4096);
    for (;;) {
        outData.resize(room);
        uLongf produced = static_cast<uLongf>(room);
        const int status =
            uncompress(outData.data(), &produced, compressed.data(), static_cast<uLong>(compressed.size()));
        if (status == Z_OK) {
            outData.resize(produced);
            return S_OK;
        }
        if (status != Z_BUF_ERROR || room >= kLargestResult) {
            outData.clear();
            return status == Z_MEM_ERROR ? E_OUTOFMEMORY : E_FAIL;
        }
        room = std::min(room * 2, kLargestResult);
    }
}
