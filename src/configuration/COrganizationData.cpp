#include "configuration/COrganizationData.h"

#include "configuration/ConfigurationXml.h"

#include <tinyxml2.h>

using namespace configuration_xml;
using tinyxml2::XMLElement;

COrganizationData::COrganizationData(std::shared_ptr<FileList> files)
    : m_files(std::move(files))
{}

void COrganizationData::Read(const XMLElement& organization)
{
    ReadChildValue(organization, "Name", "Value", m_name);
    if (organization.FirstChildElement("Logo")) {
        ReadChildValue(organization, "Logo", "Value", m_logo);
        m_files->AddRelativeFile(m_logo);
    }
}

void COrganizationData::Write(XMLElement& organization) const
{
    if (!m_name.IsEmpty())
        AppendValueChild(organization, "Name", m_name);
    if (!m_logo.IsEmpty())
        AppendValueChild(organization, "Logo", BareFileName(m_logo));
}
