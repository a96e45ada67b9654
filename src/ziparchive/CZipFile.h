#pragma once

#include "ziparchive/CZipAbstractFile.h"

// A file on disk through a POSIX descriptor.
class CZipFile : public CZipAbstractFile {
public:
    enum OpenMode { modeRead, modeReadWrite, modeCreate };

    CZipFile() = default;
    ~CZipFile() override;
    CZipFile(const CZipFile&) = delete;
    CZipFile& operator=(const CZipFile&) = delete;

    // `path` is UTF-8. modeCreate truncates or makes the file. Throws on failure.
    void Open(const std::string& path, OpenMode mode);

    size_t Read(void* buffer, size_t count) override;
    void Write(const void* buffer, size_t count) override;
    uint64_t Seek(int64_t offset, SeekOrigin origin = begin) override;
    uint64_t GetPosition() const override;
    uint64_t GetLength() const override;
    void SetLength(uint64_t length) override;
    void Flush() override;
    bool IsClosed() const override { return m_fd < 0; }
    void Close() override;
    std::string GetFilePath() const override { return m_path; }
    int GetDescriptor() const { return m_fd; }

private:
    [[noreturn]] void ThrowLastError() const;

    int m_fd = -1;
    std::string m_path;
};
