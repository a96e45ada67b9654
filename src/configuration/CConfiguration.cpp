#include "CConfiguration.h"

CConfiguration::CConfiguration() = default;
CConfiguration::~CConfiguration() = default;

void CConfiguration::SetLoadedCallback(LoadedCallback callback) { m_loadedCallback = std::move(callback); }
bool CConfiguration::OpenCollectionDirectory(const CAtlString&) { return false; }
bool CConfiguration::OpenCollectionFile(const CAtlString&) { return false; }
bool CConfiguration::OpenInstalled(const CAtlString&) { return false; }
bool CConfiguration::ReadConfigurationXml(const CAtlString&) { return false; }
bool CConfiguration::ReadMetaDataXml(const CAtlString&) { return false; }
bool CConfiguration::WriteConfigurationXml(const CAtlString&) const { return false; }
void CConfiguration::Reset() { m_valid = false; }
bool CConfiguration::IsLoaded() const { return m_valid; }
bool CConfiguration::IsStored() const { return false; }
bool CConfiguration::FindInstalled() { return false; }
bool CConfiguration::ComposeRepositoryEntry() { return false; }
bool CConfiguration::Register() { return false; }
bool CConfiguration::Unregister() { return false; }
bool CConfiguration::StoreConfiguration() { return false; }
bool CConfiguration::RemoveStoredFiles() { return false; }
