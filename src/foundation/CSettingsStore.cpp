#include "foundation/CSettingsStore.h"

#include "foundation/SystemLocation.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSettings>

#include <atomic>

#include <memory>

namespace {

// The machine-wide folder moves with CURATOOL_ROOT, which can change while the process runs
// (tests do), so it is set again before every store is made.
void PointSystemScopeAtSystemFolder()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::SystemScope,
                       curatool::SystemLocation(QStringLiteral("/etc/xdg")));
}

std::unique_ptr<QSettings> OpenStore(bool userScope)
{
    PointSystemScopeAtSystemFolder();
    const QString organization = CSettingsStore::OrganizationName();
    const QString application = CSettingsStore::ApplicationName();
    const QSettings::Scope scope = userScope ? QSettings::UserScope : QSettings::SystemScope;
    auto settings = std::make_unique<QSettings>(QSettings::NativeFormat, scope, organization, application);
    if (!userScope && !settings->isWritable())
        settings = std::make_unique<QSettings>(organization, application);
    return settings;
}

// A writer killed between creating the store's lock file and writing its process id into it leaves
// a lock that nothing can prove stale, and every later write would wait 30 s on it. Taking the lock
// once with a short stale time clears such a lock after 2 s; a live writer holds it for milliseconds.
void RemoveUnclaimedLock(const QString& storeFile)
{
    QLockFile lock(storeFile + QStringLiteral(".lock"));
    lock.setStaleLockTime(2000);
    if (lock.tryLock(5000))
        lock.unlock();
}

int WriteValue(bool userScope, const CAtlString& section, const CAtlString& key, const QVariant& value)
{
    auto settings = OpenStore(userScope);
    if (!settings->isWritable())
        return CSettingsStore::eStatusNotFound;
    RemoveUnclaimedLock(settings->fileName());
    settings->setValue(CSettingsStore::MapKey(section.ToQString(), key.ToQString()), value);
    settings->sync();
    return settings->status() == QSettings::NoError ? CSettingsStore::eStatusOk : CSettingsStore::eStatusNotFound;
}

void SetStatus(int* status, int value)
{
    if (status)
        *status = value;
}

}  // namespace

QString CSettingsStore::OrganizationName()
{
    const QString name = QCoreApplication::organizationName();
    return name.isEmpty() ? QStringLiteral("zoltaworks") : name;
}

namespace {
std::atomic<int> g_blankIdentities{0};
}

QString CSettingsStore::ApplicationName()
{
    return g_blankIdentities.load() > 0 ? QString() : QCoreApplication::applicationName();
}

CSettingsStore::BlankIdentity::BlankIdentity()
    : m_organization(QCoreApplication::organizationName()),
      m_domain(QCoreApplication::organizationDomain()),
      m_application(QCoreApplication::applicationName())
{
    ++g_blankIdentities;
    QCoreApplication::setOrganizationName(QString());
    QCoreApplication::setOrganizationDomain(QString());
    QCoreApplication::setApplicationName(QString());
}

CSettingsStore::BlankIdentity::~BlankIdentity()
{
    QCoreApplication::setOrganizationName(m_organization);
    QCoreApplication::setOrganizationDomain(m_domain);
    QCoreApplication::setApplicationName(m_application);
    --g_blankIdentities;
}

QString CSettingsStore::MapSection(const QString& section)
{
    QString mapped = section;
    mapped.replace(QLatin1Char('\\'), QLatin1Char('/'));
    while (mapped.endsWith(QLatin1Char('/')))
        mapped.chop(1);
    while (mapped.startsWith(QLatin1Char('/')))
        mapped.remove(0, 1);
    return mapped;
}

QString CSettingsStore::MapKey(const QString& section, const QString& key)
{
    return MapSection(section) + QLatin1Char('/') + key;
}

CAtlString CSettingsStore::ReadString(bool userScope, const CAtlString& section, const CAtlString& key,
                                      const CAtlString& defaultValue, int* status, const CAtlString&)
{
    auto settings = OpenStore(userScope);
    const QString path = MapKey(section.ToQString(), key.ToQString());
    if (!settings->contains(path)) {
        SetStatus(status, eStatusNotFound);
        return defaultValue;
    }
    SetStatus(status, eStatusOk);
    return CAtlString(settings->value(path).toString());
}

int CSettingsStore::ReadInt(bool userScope, const CAtlString& section, const CAtlString& key, int defaultValue,
                            int* status, const CAtlString&)
{
    auto settings = OpenStore(userScope);
    const QString path = MapKey(section.ToQString(), key.ToQString());
    bool isNumber = false;
    const int value = settings->contains(path) ? settings->value(path).toInt(&isNumber) : 0;
    SetStatus(status, isNumber ? eStatusOk : eStatusNotFound);
    return isNumber ? value : defaultValue;
}

int CSettingsStore::WriteString(bool userScope, const CAtlString& section, const CAtlString& key,
                                const CAtlString& value, const CAtlString&)
{
    return WriteValue(userScope, section, key, value.ToQString());
}

int CSettingsStore::WriteInt(bool userScope, const CAtlString& section, const CAtlString& key, int value,
                             const CAtlString&)
{
    return WriteValue(userScope, section, key, value);
}

int CSettingsStore::DeleteSection(bool userScope, const CAtlString& section, const CAtlString&)
{
    auto settings = OpenStore(userScope);
    if (!settings->isWritable())
        return eStatusNotFound;
    settings->remove(MapSection(section.ToQString()));
    settings->sync();
    return settings->status() == QSettings::NoError ? eStatusOk : eStatusNotFound;
}

int CSettingsStore::ListSection(bool userScope, const CAtlString& section, std::vector<CAtlString>& names)
{
    auto settings = OpenStore(userScope);
    settings->beginGroup(MapSection(section.ToQString()));
    const QStringList children = settings->childGroups() + settings->childKeys();
    settings->endGroup();
    for (const QString& child : children)
        names.push_back(CAtlString(child));
    return children.isEmpty() ? eStatusNotFound : eStatusOk;
}

int CSettingsStore::WriteStringArray(bool userScope, const CAtlString& section, const QStringList& values,
                                     const CAtlString& storeName)
{
    DeleteSection(userScope, section, storeName);
    if (WriteInt(userScope, section, CAtlString(L"count"), int(values.size()), storeName) != eStatusOk)
        return eStatusNotFound;
    int result = eStatusOk;
    for (qsizetype index = 0; index < values.size(); ++index) {
        if (WriteString(userScope, section, CAtlString(QString::number(index)), CAtlString(values[index]), storeName) !=
            eStatusOk)
            result = eStatusNotFound;
    }
    return result;
}

int CSettingsStore::ReadStringArray(bool userScope, const CAtlString& section, QStringList& values,
                                    const CAtlString& storeName)
{
    int status = eStatusOk;
    const int count = ReadInt(userScope, section, CAtlString(L"count"), 0, &status, storeName);
    int result = eStatusOk;
    for (int index = 0; index < count; ++index) {
        const CAtlString value =
            ReadString(userScope, section, CAtlString(QString::number(index)), CAtlString(), &status, storeName);
        if (status != eStatusOk)
            result = eStatusNotFound;
        else
            values.append(value.ToQString());
    }
    return result;
}

QString CSettingsStore::SystemStoreFileName()
{
    QString name = curatool::SystemLocation(QStringLiteral("/etc/xdg")) + QLatin1Char('/') + OrganizationName();
    const QString application = ApplicationName();
    if (!application.isEmpty())
        name += QLatin1Char('/') + application;
    return name + QStringLiteral(".conf");
}

bool CSettingsStore::IsSystemStoreWritable()
{
    const QString name = SystemStoreFileName();
    QFile file(name);
    if (file.exists())
        return file.open(QIODevice::ReadWrite);
    // QSettings makes the missing folders when it saves; so does the test.
    QDir().mkpath(QFileInfo(name).absolutePath());
    if (!file.open(QIODevice::ReadWrite))
        return false;
    file.close();
    return file.remove();
}
