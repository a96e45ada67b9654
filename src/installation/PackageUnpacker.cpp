#include "installation/PackageUnpacker.h"

#include "foundation/RunTempFolder.h"
#include "gallery/CGalleryManifestIO.h"
#include "ziparchive/ZipHelpers.h"

#include <algorithm>

PackageUnpacker::PackageUnpacker(const std::vector<CZoltaFilePath>& archives, std::size_t workers, std::size_t ahead)
    : m_ahead(std::max<std::size_t>(1, ahead))
{
    for (const CZoltaFilePath& archive : archives)
        m_archives.push_back(archive.ToQString());
    workers = std::min(std::max<std::size_t>(1, workers), m_archives.size());
    for (std::size_t i = 0; i < workers; ++i)
        m_workers.emplace_back([this] { UnpackAll(); });
}

PackageUnpacker::~PackageUnpacker()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    for (std::thread& worker : m_workers)
        worker.join();
    for (const auto& [index, result] : m_done)
        Drop(result);
}

std::size_t PackageUnpacker::DefaultWorkers()
{
    return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, 3);
}

void PackageUnpacker::UnpackAll()
{
    for (;;) {
        std::size_t index = 0;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_changed.wait(lock, [this] { return m_stopping || m_next < m_wanted + m_ahead; });
            if (m_stopping || m_next >= m_archives.size())
                return;
            index = m_next++;
        }
        Result result;
        static_cast<void>(ZipTakeLastError());  // an earlier archive's failure is not this one's
        CZoltaDirectoryPath folder;
        result.whole = CGalleryManifestIO::UnpackArchive(CZoltaFilePath(m_archives[index]), folder);
        result.error = ZipTakeLastError();
        result.folder = folder.ToQString();
        bool wanted = false;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            wanted = !m_stopping && index >= m_wanted;
            if (wanted)
                m_done.emplace(index, std::move(result));
        }
        if (!wanted)
            Drop(result);
        m_changed.notify_all();
    }
}

std::optional<PackageUnpacker::Unpacked> PackageUnpacker::Take(const CZoltaFilePath& archive)
{
    const QString path = archive.ToQString();
    std::vector<Result> passed;
    std::optional<Unpacked> taken;
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        const auto found =
            std::find(m_archives.begin() + static_cast<std::ptrdiff_t>(m_wanted), m_archives.end(), path);
        if (found == m_archives.end())
            return std::nullopt;
        const std::size_t index = static_cast<std::size_t>(found - m_archives.begin());
        m_wanted = index;
        m_next = std::max(m_next, index);
        while (!m_done.empty() && m_done.begin()->first < index) {
            passed.push_back(std::move(m_done.begin()->second));
            m_done.erase(m_done.begin());
        }
        m_changed.notify_all();
        m_changed.wait(lock, [&] { return m_done.count(index) != 0; });
        Result& result = m_done[index];
        taken = Unpacked{CZoltaDirectoryPath(result.folder), result.whole, std::move(result.error)};
        m_done.erase(index);
        m_wanted = index + 1;
    }
    m_changed.notify_all();
    for (const Result& result : passed)
        Drop(result);
    return taken;
}

void PackageUnpacker::Drop(const Result& result) const
{
    if (!result.folder.isEmpty())
        RunTempFolder::GiveBack(CZoltaDirectoryPath(result.folder));
}
