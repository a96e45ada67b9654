#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Raw input and output under an archive: a file on disk or a block of memory. Failures throw
// CZipException; a read past the end is short, never a failure.
class CZipAbstractFile {
public:
    enum SeekOrigin { begin, current, end };

    virtual ~CZipAbstractFile() = default;

    virtual size_t Read(void* buffer, size_t count) = 0;
    virtual void Write(const void* buffer, size_t count) = 0;
    virtual uint64_t Seek(int64_t offset, SeekOrigin origin = begin) = 0;
    virtual uint64_t GetPosition() const = 0;
    virtual uint64_t GetLength() const = 0;
    virtual void SetLength(uint64_t length) = 0;
    virtual void Flush() {}
    virtual bool IsClosed() const = 0;
    virtual void Close() = 0;
    // UTF-8 path for messages; empty for memory.
    virtual std::string GetFilePath() const = 0;

    // Reads exactly `count` bytes or returns false.
    bool ReadExactly(void* buffer, size_t count) { return Read(buffer, count) == count; }
};
