#pragma once

#include <QString>

// Who the program is to QCoreApplication: the organisation and application under which the
// settings store keeps its files. Applied once, right after QApplication exists.
class CProgramIdentity {
public:
    static const char* const OrganizationName;    // "zoltaworks", the store's own fixed name
    static const char* const OrganizationDomain;  // "zoltaworks.com"
    static const char* const ApplicationName;     // "Curatool"

    static void Apply();
};
