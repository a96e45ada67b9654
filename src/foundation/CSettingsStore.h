#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <QString>
#include <QStringList>

#include <vector>

// Registry-style settings over QSettings. Callers speak of a section such as
// "Software\ZOLTA Technologies Inc.\Gallery\TeamContent\<guid>", a value name and a scope; every
// call opens its own native-format QSettings and drops it afterwards.
//
// Scope: false is the machine-wide store, true the user's own. A machine-wide store that cannot be
// written (an ordinary user) is replaced by the user's store, so writes land there and reads follow;
// QSettings still shows machine-wide values behind the user's.
//
// The store name ("com.zoltaworks.Registry", "Gallery", ...) is what the same call would name on
// other platforms; it does not choose a file here.
class CSettingsStore {
public:
    enum eStatus {
        eStatusOk = 0,
        eStatusNotFound = 2,  // absent key on reads; no usable store on writes
    };

    static CAtlString ReadString(bool userScope, const CAtlString& section, const CAtlString& key,
                                 const CAtlString& defaultValue, int* status = nullptr,
                                 const CAtlString& storeName = CAtlString());
    static int ReadInt(bool userScope, const CAtlString& section, const CAtlString& key, int defaultValue,
                       int* status = nullptr, const CAtlString& storeName = CAtlString());

    static int WriteString(bool userScope, const CAtlString& section, const CAtlString& key, const CAtlString& value,
                           const CAtlString& storeName = CAtlString());
    static int WriteInt(bool userScope, const CAtlString& section, const CAtlString& key, int value,
                        const CAtlString& storeName = CAtlString());

    // Removes the section with everything below it.
    static int DeleteSection(bool userScope, const CAtlString& section, const CAtlString& storeName = CAtlString());

    // Names of the child sections, then of the values, directly below `section`. 2 when there are none.
    static int ListSection(bool userScope, const CAtlString& section, std::vector<CAtlString>& names);

    // A list of strings kept as the value "count" and the values "0", "1", ... of one section.
    // Writing replaces the whole section; a failed "count" writes no entries.
    static int WriteStringArray(bool userScope, const CAtlString& section, const QStringList& values,
                                const CAtlString& storeName = CAtlString());
    // Appends the stored entries to `values`; 2 if any entry is missing (the others are still read).
    static int ReadStringArray(bool userScope, const CAtlString& section, QStringList& values,
                               const CAtlString& storeName = CAtlString());

    // "a\\b\\" and "/a/b" both give "a/b": the QSettings group of a registry-style section.
    static QString MapSection(const QString& section);
    static QString MapKey(const QString& section, const QString& key);

    // The machine-wide store's file: <root>/etc/xdg/<organisation>[/<application>].conf.
    static QString SystemStoreFileName();
    // Whether that file can be opened for writing, or created (and removed again) if absent.
    static bool IsSystemStoreWritable();

    // The organisation of the store: QCoreApplication's, or "zoltaworks" when it has none.
    static QString OrganizationName();
    // QCoreApplication's application name; empty while a BlankIdentity lives.
    static QString ApplicationName();

    // While one lives, the process's organisation name, domain and application name are blank,
    // so the store is the fixed organisation's own file whatever the program calls itself.
    // QCoreApplication cannot hold a blank application name (it puts the program file's name in
    // its place), so the store keeps the blank itself. The names come back when it goes.
    class BlankIdentity {
    public:
        BlankIdentity();
        ~BlankIdentity();
        BlankIdentity(const BlankIdentity&) = delete;
        BlankIdentity& operator=(const BlankIdentity&) = delete;

    private:
        QString m_organization;
        QString m_domain;
        QString m_application;
    };
};
