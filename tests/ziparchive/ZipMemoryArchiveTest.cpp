#include "ziparchive/CZipArchive.h"
#include "ziparchive/CZipMemFile.h"

#include <gtest/gtest.h>

TEST(ZipMemoryArchive, AnArchiveWithoutEntriesOpensFromMemoryAndListsNothing)
{
    // Nothing but the end record: no entries, and a central directory of 0 bytes at offset 0.
    const unsigned char endRecord[22] = {0x50, 0x4B, 0x05, 0x06};
    CZipMemFile memory(endRecord, sizeof endRecord);
    CZipArchive zip;
    ASSERT_TRUE(zip.Open(memory, CZipArchive::zipOpenReadOnly));
    EXPECT_EQ(zip.GetCount(), 0);
    zip.Close();
}
