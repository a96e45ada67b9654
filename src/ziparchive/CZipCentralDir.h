#pragma once

#include "ziparchive/CZipFileHeader.h"

#include <cstdint>
#include <string>
#include <vector>

class CZipAbstractFile;

// The table of entries at the end of an archive, with the end record that locates it.
class CZipCentralDir {
public:
    // Finds the end record by reading backwards from the end of the file, checks it, and reads
    // every central header. No end record is 116; one that contradicts itself or the file is 101,
    // and so are entries whose data overlap.
    void Read(CZipAbstractFile& file, const std::string& archiveName);
    // Writes the headers and the end record at the file's position, and cuts the file there.
    void Write(CZipAbstractFile& file, const std::string& archiveName) const;
    void Clear();

    // Index of the first entry of that name, or -1; without case, "\" and "/" count alike.
    int FindFile(const std::string& name, bool caseSensitive) const;

    std::vector<CZipFileHeader> m_headers;
    // Bytes in front of the archive proper (a stub prepended to it); offsets are counted after them.
    uint64_t m_bytesBeforeZip = 0;
    // Where the central directory starts in the file: the end of the entries' data.
    uint64_t m_centralStart = 0;
    std::string m_comment;

private:
    void RefuseOverlaps(const std::string& archiveName) const;
    uint64_t FindEndRecord(CZipAbstractFile& file, const std::string& archiveName, unsigned char* record);
};
