#pragma once

#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"

#include <QString>

#include <condition_variable>
#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

// Unpacks the archives of a run from a local source on threads of their own, ahead of the
// installer, which takes them one by one in their order: inflating a package costs more than
// everything else the installer does with it, so the two go on side by side. At most `ahead`
// archives beyond the installer's are unpacked or being unpacked. Unpacking touches nothing but
// the temporary folder; what the installer sees and reports is what unpacking each archive
// itself in its turn would give.
class PackageUnpacker {
public:
    struct Unpacked {
        CZoltaDirectoryPath folder;  // may be empty: no folder could be made
        bool whole = false;          // every entry came out
        std::string error;           // the archive's complaint when not whole
    };

    explicit PackageUnpacker(const std::vector<CZoltaFilePath>& archives, std::size_t workers = DefaultWorkers(),
                             std::size_t ahead = 4);
    // One thread for each processor, at most 3: the installer's own work is the smaller part,
    // and it waits while the next package is not ready.
    static std::size_t DefaultWorkers();

    // Stops after the archives being unpacked; folders not taken are given back.
    ~PackageUnpacker();
    PackageUnpacker(const PackageUnpacker&) = delete;
    PackageUnpacker& operator=(const PackageUnpacker&) = delete;

    // The unpacking of `archive` when it is one still to come: those before it, which the
    // installer passed over, are dropped. Otherwise nothing, and the caller unpacks it itself.
    std::optional<Unpacked> Take(const CZoltaFilePath& archive);

private:
    struct Result {
        QString folder;
        bool whole = false;
        std::string error;
    };

    void UnpackAll();
    void Drop(const Result& result) const;

    // Paths as QString, whose sharing is safe across threads, unlike the path classes'.
    std::vector<QString> m_archives;
    std::size_t m_ahead;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::map<std::size_t, Result> m_done;  // unpacked and not taken, by index
    std::size_t m_next = 0;                // the archive to unpack next
    std::size_t m_wanted = 0;              // the first archive the installer may still take
    bool m_stopping = false;
    std::vector<std::thread> m_workers;
};
