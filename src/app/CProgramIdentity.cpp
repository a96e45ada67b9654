#include "app/CProgramIdentity.h"

#include <QCoreApplication>

const char* const CProgramIdentity::OrganizationName = "zoltaworks";
const char* const CProgramIdentity::OrganizationDomain = "zoltaworks.com";
const char* const CProgramIdentity::ApplicationName = "Curatool";

void CProgramIdentity::Apply()
{
    QCoreApplication::setOrganizationName(QString::fromLatin1(OrganizationName));
    QCoreApplication::setOrganizationDomain(QString::fromLatin1(OrganizationDomain));
    QCoreApplication::setApplicationName(QString::fromLatin1(ApplicationName));
}
