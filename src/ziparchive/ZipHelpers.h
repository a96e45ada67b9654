#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"

#include <cstddef>
#include <string>

// The archive operations the rest of the system uses. Each one makes its own CZipArchive, opens,
// works, and closes it again, so no archive stays open between calls. A failure of the archive is
// caught: the result is false. Buffers handed out are malloc'ed; the caller frees them with free().

// Adds `source` to the existing `archive` under `nameInArchive`.
[[nodiscard]] bool ZipAddFile(const CZoltaFilePath& archive, const CAtlString& nameInArchive,
                              const CZoltaFilePath& source);
// Creates `archive` holding `source` under its bare file name.
[[nodiscard]] bool ZipAddFileRelative(const CZoltaFilePath& source, const CZoltaFilePath& archive);
// Creates `archive` holding every file and folder below `directory`, named relative to it.
[[nodiscard]] bool ZipAddDirectory(const CZoltaDirectoryPath& directory, const CZoltaFilePath& archive);

// Reads the first entry whose name matches `name` without regard to case ("\" and "/" alike) into
// a new buffer. `data` and `size` are 0 unless the result is true.
[[nodiscard]] bool ZipExtractToBuffer(const CZoltaFilePath& archive, const CAtlString& name, unsigned char*& data,
                                      size_t& size);
// Extracts the entries below "sounds\" or "sounds/" into `destination`, each under its last name.
[[nodiscard]] bool ZipExtractMatching(const CZoltaFilePath& archive, const CZoltaDirectoryPath& destination);
// Extracts the entry `name` into `destination` under its last name; true if that file then exists.
[[nodiscard]] bool ZipExtractFile(const CZoltaFilePath& archive, const CAtlString& name,
                                  const CZoltaDirectoryPath& destination);
// Extracts the entry `name` into memory; `buffer` and `size` are 0 unless the result is true.
[[nodiscard]] bool ZipExtractToMemory(const CZoltaFilePath& archive, const CAtlString& name, unsigned char*& buffer,
                                      size_t& size);
// Extracts every entry in index order into `destination`, keeping sub-folders. Refused (28, "No
// space left on device") when the entries' declared sizes do not fit in the free space. Without
// `archiveTimes` the files keep the time of their writing.
[[nodiscard]] bool ZipExtractAll(const CZoltaFilePath& archive, const CZoltaDirectoryPath& destination,
                                 bool archiveTimes = true);

// Why the last helper called on this thread returned false for a damaged or unfit archive, as the
// archive layer words it; empty when it did not fail that way. Taking it clears it.
std::string ZipTakeLastError();
