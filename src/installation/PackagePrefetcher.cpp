#include "installation/PackagePrefetcher.h"

#include "installation/CGalleryInstallation.h"
#include "foundation/CSettingsStore.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "network/FetchUrl.h"

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <set>

const wchar_t* const PackagePrefetcher::kSection = L"Software/ZOLTA Technologies Inc./Curatool/Network";
const wchar_t* const PackagePrefetcher::kConnectionsKey = L"ParallelDownloads";

namespace {

// How often the installer, waiting for a package, passes on the bytes that came.
constexpr std::chrono::milliseconds kProgressInterval(50);
// How long the interface thread, should it be the one to wait, goes without its events: a
// connection may be waiting there for the user's credentials.
constexpr std::chrono::milliseconds kPumpInterval(10);

// Keeps the last byte report of one fetch for the installer to pass on in its turn.
class ByteRecorder : public IByteProgressObserver {
public:
    explicit ByteRecorder(std::atomic<std::uint64_t>& bytes)
        : m_bytes(bytes)
    {}
    void ReadProgress(unsigned int done, unsigned int total) override
    {
        m_bytes.store(std::uint64_t(done) << 32 | total);
    }

private:
    std::atomic<std::uint64_t>& m_bytes;
};

}  // namespace

int PackagePrefetcher::ConfiguredConnections()
{
    const int stored = CSettingsStore::ReadInt(true, kSection, kConnectionsKey, kDefaultConnections);
    return std::clamp(stored, 1, kMaxConnections);
}

PackagePrefetcher::PackagePrefetcher(std::vector<Package> packages, int connections, IProxyObserver* proxyObserver,
                                     const volatile bool* cancel)
    : m_connections(static_cast<size_t>(std::max(1, connections))),
      m_cancel(cancel),
      m_credentials(proxyObserver)
{
    std::set<CAtlString> paths;
    for (Package& package : packages) {
        if (CGalleryInstallation::IsHostileName(package.name) || !paths.insert(package.path.GetPath()).second)
            continue;
        m_slots.push_back(std::make_unique<Slot>());
        m_slots.back()->package = std::move(package);
    }
    const size_t threads = std::min(m_connections, m_slots.size());
    for (size_t index = 0; index < threads; ++index) {
        // A thread of its own per connection: each fetch waits in its own event loop.
        m_threads.push_back(QThread::create([this] { Work(); }));
        m_threads.back()->start();
    }
}

PackagePrefetcher::~PackagePrefetcher()
{
    Cancel();
    for (QThread* thread : m_threads) {
        thread->wait();
        delete thread;
    }
    // Fetched for nobody: what came ahead of a stop is no content of ours.
    for (const auto& slot : m_slots) {
        if (slot->state == eStateFetched)
            slot->package.path.Remove();
    }
}

void PackagePrefetcher::Cancel()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_abort = true;
    }
    m_workToDo.notify_all();
    m_fetched.notify_all();
}

bool PackagePrefetcher::Aborted() const
{
    return m_abort || (m_cancel && *m_cancel);
}

void PackagePrefetcher::Work()
{
    SharedProxyCredentials::Connection connection(m_credentials);
    for (;;) {
        Slot* slot = nullptr;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_workToDo.wait(
                lock, [this] { return Aborted() || m_next >= m_slots.size() || m_next < m_taken + m_connections; });
            if (Aborted() || m_next >= m_slots.size())
                return;
            slot = m_slots[m_next++].get();
            slot->state = eStateFetching;
        }
        slot->package.path.GetFolder().Create();
        ByteRecorder bytes(slot->bytes);
        CAtlString reason;
        QByteArray lines;
        const FetchControl control{[this] { return Aborted(); }, &lines};
        const HRESULT result = FetchUrl(slot->package.url, slot->package.path, &connection, &bytes, &reason, &control);
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            slot->result = result;
            slot->reason = reason;
            slot->consoleLines = lines;
            slot->state = eStateFetched;
        }
        m_fetched.notify_all();
    }
}

bool PackagePrefetcher::IsNext(const CAtlString& name)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_taken < m_slots.size() && m_slots[m_taken]->package.name == name;
}

HRESULT PackagePrefetcher::Take(const CAtlString& name, CZoltaFilePath& path, CAtlString& reason,
                                const std::function<void(unsigned int, unsigned int)>& progress)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_taken >= m_slots.size() || m_slots[m_taken]->package.name != name) {
        reason = L"Not among the packages fetched ahead";
        return E_FAIL;
    }
    Slot& slot = *m_slots[m_taken];
    std::uint64_t shown = kNoBytes;
    const auto passOn = [&] {
        const std::uint64_t bytes = slot.bytes.load();
        if (bytes == shown || bytes == kNoBytes)
            return;
        shown = bytes;
        lock.unlock();
        if (progress)
            progress(static_cast<unsigned int>(bytes >> 32), static_cast<unsigned int>(bytes & 0xFFFFFFFFu));
        lock.lock();
    };
    const QCoreApplication* application = QCoreApplication::instance();
    const bool pumps = application && QThread::currentThread() == application->thread();
    while (slot.state != eStateFetched) {
        if (slot.state == eStateWaiting && Aborted()) {
            reason = L"Cancelled";
            return E_ABORT;
        }
        m_fetched.wait_for(lock, pumps ? kPumpInterval : kProgressInterval);
        if (pumps) {
            lock.unlock();
            QCoreApplication::processEvents();
            lock.lock();
        }
        if (slot.state != eStateFetched)
            passOn();
    }
    passOn();
    slot.state = eStateTaken;
    ++m_taken;
    path = slot.package.path;
    reason = slot.reason;
    const HRESULT result = slot.result;
    const QByteArray lines = slot.consoleLines;
    lock.unlock();
    m_workToDo.notify_all();
    PrintConsoleLines(lines);
    return result;
}
