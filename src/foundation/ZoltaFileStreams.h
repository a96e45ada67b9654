#pragma once

#include "foundation/CZoltaFilePath.h"
#include "foundation/ZoltaStreamBase.h"

#include <cstdint>
#include <cstdio>
#include <vector>

// The common body of the streams over a C library file handle. The handle's own buffering is
// what makes the thousands of small writes and seeks of the manifest image affordable.
class CStdioFileStream : public CZoltaStreamBase<IStream> {
public:
    [[nodiscard]] HRESULT Read(void* buffer, std::uint32_t size, std::uint32_t* outRead) override;
    [[nodiscard]] HRESULT Write(const void* data, std::uint32_t size, std::uint32_t* outWritten) override;
    [[nodiscard]] HRESULT Seek(LARGE_INTEGER offset, std::uint32_t origin, ULARGE_INTEGER* outPosition) override;
    [[nodiscard]] HRESULT Stat(STATSTG* outStat, std::uint32_t flags) override;

    bool IsValid() const { return m_valid; }
    const CZoltaFilePath& GetPath() const { return m_path; }
    // E_FAIL once any write has come up short (buffered bytes are flushed to find out) or the
    // file never opened; S_OK otherwise.
    [[nodiscard]] HRESULT GetWriteStatus() const;

protected:
    CStdioFileStream(const CZoltaFilePath& path, const char* mode, std::uint64_t startPosition);
    ~CStdioFileStream() override;

private:
    std::FILE* m_file = nullptr;
    CZoltaFilePath m_path;
    std::uint64_t m_position = 0;
    bool m_valid = false;
    bool m_writeFailed = false;
};

// Reads an existing file ("rb").
class CReadableStreamOnFile : public CStdioFileStream {
public:
    explicit CReadableStreamOnFile(const CZoltaFilePath& path);
};

// Writes a file from scratch ("w+b": an existing file is truncated).
class CWritableFileStream : public CStdioFileStream {
public:
    explicit CWritableFileStream(const CZoltaFilePath& path, std::uint64_t startPosition = 0);
};

// Collects the data in a raw temporary file and, when the last reference goes, stores it in the
// target compressed with zlib's compress. Should compression fail, the raw bytes are stored, so
// that a readable file always stands at the target.
class CWritableCompressedFileStream : public CZoltaStreamBase<IStream> {
public:
    explicit CWritableCompressedFileStream(const CZoltaFilePath& target, std::uint64_t startPosition = 0);

    [[nodiscard]] HRESULT Read(void* buffer, std::uint32_t size, std::uint32_t* outRead) override;
    [[nodiscard]] HRESULT Write(const void* data, std::uint32_t size, std::uint32_t* outWritten) override;
    [[nodiscard]] HRESULT Seek(LARGE_INTEGER offset, std::uint32_t origin, ULARGE_INTEGER* outPosition) override;
    [[nodiscard]] HRESULT Stat(STATSTG* outStat, std::uint32_t flags) override;

    bool IsValid() const { return m_valid; }
    // The temporary file that takes the raw bytes until the stream closes.
    const CZoltaFilePath& GetRawPath() const { return m_rawPath; }
    [[nodiscard]] HRESULT GetWriteStatus() const;

private:
    ~CWritableCompressedFileStream() override;
    void Close();

    bool m_failed = false;  // set once data has gone into the temporary file
    std::uint64_t m_start = 0;
    CZoltaFilePath m_target;
    CZoltaFilePath m_rawPath;
    CComPtr<CWritableFileStream> m_inner;
    bool m_valid = false;
};

// Factories: a null holder when the file does not open.
CComPtr<IStream> OpenReadStream(const CZoltaFilePath& path);
CComPtr<IStream> CreateWriteStream(const CZoltaFilePath& path, std::uint32_t startLow = 0, std::uint32_t startHigh = 0);
CComPtr<IStream> CreateCompressedWriteStream(const CZoltaFilePath& path, std::uint32_t startLow = 0,
                                             std::uint32_t startHigh = 0);

// The reading side of CWritableCompressedFileStream: the whole file through zlib's uncompress.
[[nodiscard]] HRESULT ReadCompressedFile(const CZoltaFilePath& path, std::vector<std::uint8_t>& outData);
