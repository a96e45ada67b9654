#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CZoltaFilePath.h"
#include "network/SharedProxyCredentials.h"
#include "foundation/ZoltaResult.h"

#include <QByteArray>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

class IProxyObserver;
class QThread;

// Fetches the packages of a run over HTTP on several connections at once, ahead of the installer,
// which takes them one by one in their order. At most `connections` packages are on their way or
// waiting at any time; each body streams to its file. Every fetch keeps the downloader's rules;
// a proxy's request for credentials is answered once for all connections together.
//
// Take gives each package's outcome where the installer stands, with the bytes and console lines
// its fetch would have shown, so that what an observer sees is what one fetch after another shows.
// Cancel (or the engine's cancel flag) stops every connection at once; the files of packages not
// taken are removed when this goes.
class PackagePrefetcher {
public:
    // The program's user settings: how many packages may be fetched at once.
    static const wchar_t* const kSection;         // "Software/ZOLTA Technologies Inc./Curatool/Network"
    static const wchar_t* const kConnectionsKey;  // "ParallelDownloads"
    static constexpr int kDefaultConnections = 4;
    static constexpr int kMaxConnections = 16;
    // The stored value, within 1 and kMaxConnections; kDefaultConnections when none is stored.
    static int ConfiguredConnections();

    struct Package {
        CAtlString name;  // as the installer asks for it
        CAtlString url;
        CZoltaFilePath path;
    };

    // Starts fetching at once. `cancel`, when given, is polled like Cancel. A package whose name
    // is hostile, or whose file an earlier one also uses, is left for the caller to fetch itself
    // when its turn comes: two transfers never write one file.
    PackagePrefetcher(std::vector<Package> packages, int connections, IProxyObserver* proxyObserver,
                      const volatile bool* cancel = nullptr);
    ~PackagePrefetcher();
    PackagePrefetcher(const PackagePrefetcher&) = delete;
    PackagePrefetcher& operator=(const PackagePrefetcher&) = delete;

    // Whether the next package to take is `name`.
    bool IsNext(const CAtlString& name);
    // Waits for the next package, which must be `name`. Its bytes go to `progress` (done, total)
    // while it comes, its console lines are printed when it has come; then its result, its path
    // and, on failure, why. E_ABORT once cancelled.
    [[nodiscard]] HRESULT Take(const CAtlString& name, CZoltaFilePath& path, CAtlString& reason,
                               const std::function<void(unsigned int, unsigned int)>& progress);
    void Cancel();

private:
    enum eState {
        eStateWaiting,
        eStateFetching,
        eStateFetched,
        eStateTaken,
    };
    struct Slot {
        Package package;
        eState state = eStateWaiting;
        HRESULT result = E_FAIL;
        CAtlString reason;
        QByteArray consoleLines;
        std::atomic<std::uint64_t> bytes{kNoBytes};  // done << 32 | total, of the last byte report
    };
    static constexpr std::uint64_t kNoBytes = ~std::uint64_t(0);

    void Work();
    bool Aborted() const;

    std::vector<std::unique_ptr<Slot>> m_slots;
    size_t m_connections;
    const volatile bool* m_cancel;
    SharedProxyCredentials m_credentials;
    std::atomic<bool> m_abort{false};
    std::mutex m_mutex;
    std::condition_variable m_workToDo;  // to the connections
    std::condition_variable m_fetched;   // to the installer
    size_t m_next = 0;                   // the next package to start
    size_t m_taken = 0;                  // packages the installer has taken
    std::vector<QThread*> m_threads;
};
