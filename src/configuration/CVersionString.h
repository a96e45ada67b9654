#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "libZoltaAtl/CAtlStringA.h"

// A four-part version value. The parser is lenient: besides "a.b.c.d" it understands the packed
// digit strings of older data, and text that is no version at all still compares, by its text.
class CVersionString {
public:
    CVersionString();
    explicit CVersionString(const CAtlString& text);
    explicit CVersionString(const CAtlStringA& text);
    CVersionString(const CVersionString&) = default;
    CVersionString& operator=(const CVersionString&) = default;
    virtual ~CVersionString();

    virtual bool operator<(const CVersionString& other) const;
    virtual bool operator==(const CVersionString& other) const;
    virtual bool operator>(const CVersionString& other) const;
    // The normalised "major.minor.revision.build" of a valid version, the text as given otherwise.
    virtual CAtlString ToString() const;
    virtual CVersionString& operator=(const CAtlString& text);
    virtual CVersionString& operator=(const CAtlStringA& text);

    int GetMajor() const { return m_major; }
    int GetMinor() const { return m_minor; }
    int GetRevision() const { return m_revision; }
    int GetBuild() const { return m_build; }
    bool IsValid() const { return m_valid; }
    const CAtlString& GetText() const { return m_text; }
    const CAtlString& GetFormatted() const { return m_formatted; }

private:
    void Parse(const CAtlString& text);
    void ParseDotted(const CAtlString& text);
    void ParsePacked(const CAtlString& text);
    void ParsePart(const CAtlString& part, int& field);

    int m_major = 0;
    int m_minor = 0;
    int m_revision = 0;
    int m_build = 0;
    CAtlString m_formatted;
    CAtlString m_text;
    bool m_valid = false;
};
