#pragma once

#include "ziparchive/CZipAbstractFile.h"

// A growing block of memory used as a file. It either owns its block (from malloc, so that Detach
// can hand it to a caller who frees it), or reads a caller's block without copying it.
class CZipMemFile : public CZipAbstractFile {
public:
    CZipMemFile() = default;
    // Read-only view of `size` bytes that stay the caller's.
    CZipMemFile(const void* data, size_t size);
    ~CZipMemFile() override;
    CZipMemFile(const CZipMemFile&) = delete;
    CZipMemFile& operator=(const CZipMemFile&) = delete;

    size_t Read(void* buffer, size_t count) override;
    void Write(const void* buffer, size_t count) override;
    uint64_t Seek(int64_t offset, SeekOrigin origin = begin) override;
    uint64_t GetPosition() const override { return m_position; }
    uint64_t GetLength() const override { return m_length; }
    void SetLength(uint64_t length) override;
    bool IsClosed() const override { return m_closed; }
    void Close() override { m_closed = true; }
    std::string GetFilePath() const override { return std::string(); }

    const unsigned char* GetData() const { return m_data; }
    // Hands the block (malloc'ed, at least one byte) to the caller and leaves the file empty.
    unsigned char* Detach(size_t& length);

private:
    void Reserve(size_t capacity);

    unsigned char* m_data = nullptr;
    size_t m_length = 0;
    size_t m_capacity = 0;
    size_t m_position = 0;
    bool m_owned = true;
    bool m_closed = false;
};
