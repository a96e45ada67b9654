#pragma once

#include <cstdint>
#include <ctime>
#include <string>

class CZipAbstractFile;

// One entry: the fields of its central header, and the reading and writing of its local and
// central headers. Sizes and offsets are the 32-bit fields of the format.
class CZipFileHeader {
public:
    enum { methodStored = 0, methodDeflated = 8 };
    enum { flagEncrypted = 1, flagDataDescriptor = 8, flagUtf8 = 0x800 };

    CZipFileHeader() = default;

    // Name as stored, 8-bit (UTF-8 in this system).
    const std::string& GetFileName() const { return m_fileName; }
    std::wstring GetFileNameWide() const;
    // Sets the name, turning "\" into "/" as the format wants.
    void SetFileName(const std::string& name);

    bool IsDirectory() const;
    bool IsSymbolicLink() const;
    bool IsEncrypted() const { return (m_uFlag & flagEncrypted) != 0; }
    int GetSystemCompatibility() const { return m_uVersionMadeBy >> 8; }

    // The modification time: the extended Unix time when the entry has one, else the DOS fields
    // read as local time.
    time_t GetTime() const;
    void SetTime(time_t modified);

    uint32_t GetEffComprSize() const { return m_uComprSize; }
    uint32_t GetSize() const { return m_uUncomprSize; }

    // Parses one central header from `record` (at most `available` bytes). Returns the bytes it
    // used, or 0 when the record is not a whole, well-signed central header.
    size_t ReadCentral(const unsigned char* record, size_t available);
    // Appends the central header's bytes to `out`.
    void WriteCentral(std::string& out) const;
    // Writes the local header at the file's position (sizes and CRC as they stand now) and
    // remembers how long it was.
    void WriteLocal(CZipAbstractFile& file);
    // Rewrites the CRC and sizes of an already written local header.
    void UpdateLocal(CZipAbstractFile& file, uint64_t bytesBeforeZip);
    // Checks the local header at the entry's offset and returns where its data starts.
    uint64_t LocateData(CZipAbstractFile& file, uint64_t bytesBeforeZip, uint64_t dataLimit,
                        const std::string& archiveName) const;

    uint16_t m_uVersionMadeBy = 0;
    uint16_t m_uVersionNeeded = 20;
    uint16_t m_uFlag = 0;
    uint16_t m_uMethod = methodDeflated;
    uint16_t m_uModTime = 0;
    uint16_t m_uModDate = 0;
    uint32_t m_uCrc32 = 0;
    uint32_t m_uComprSize = 0;
    uint32_t m_uUncomprSize = 0;
    uint16_t m_uDiskStart = 0;
    uint16_t m_uInternalAttr = 0;
    uint32_t m_uExternalAttr = 0;
    uint32_t m_uOffset = 0;  // of the local header, from the start of the archive proper

    std::string m_fileName;
    std::string m_centralExtra;
    std::string m_comment;

private:
    bool FindUnixTime(time_t& modified) const;
    std::string MakeLocalExtra() const;
    // The run both headers share, from "version needed" to the extra field's length (26 bytes).
    void PutSharedFields(unsigned char* at, std::size_t extraLength) const;

    bool m_hasUnixTime = false;
    time_t m_unixTime = 0;
};
