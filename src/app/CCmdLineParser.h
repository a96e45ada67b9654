#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <cwchar>
#include <map>
#include <vector>

class ICmdLineParam;

// Walks the argument vector and hands every token to the parameter object registered for it.
// Options start with "-", "--" or "\"; option names are case-sensitive. A value-taking option
// takes the next token unless that is itself an option; "name:value" passes a value that starts
// with "-" or "\". Complaints go to the error parameter, positional tokens to the default one.
class CCmdLineParser {
public:
    struct NameLess {
        bool operator()(const CAtlString& a, const CAtlString& b) const
        {
            return std::wcscmp(a.GetString(), b.GetString()) < 0;
        }
    };
    using ParamMap = std::map<CAtlString, ICmdLineParam*, NameLess>;

    void SetDefaultParam(ICmdLineParam* param) { m_defaultParam = param; }
    void SetErrorParam(ICmdLineParam* param) { m_errorParam = param; }
    // Both insert the entry or replace an existing one of the same name.
    void AddValueParam(const CAtlString& name, ICmdLineParam* param) { m_valueParams[name] = param; }
    void AddFlagParam(const CAtlString& name, ICmdLineParam* param) { m_flagParams[name] = param; }

    // The first element is the program and is skipped. The result is false when any parameter
    // refused its value or anything was complained about; callers look at the complaints instead.
    bool Parse(const std::vector<CAtlString>& arguments);

    // Whether the token is an option; if so its prefix is removed in place.
    static bool StripOptionPrefix(CAtlString& token);

    const ParamMap& ValueParams() const { return m_valueParams; }
    const ParamMap& FlagParams() const { return m_flagParams; }

private:
    bool Report(const wchar_t* reservedName, const CAtlString& text);
    bool ProcessUnmatched(const CAtlString& name);
    bool CollectComplaints();

    ICmdLineParam* m_defaultParam = nullptr;
    ICmdLineParam* m_errorParam = nullptr;
    ParamMap m_valueParams;
    ParamMap m_flagParams;
};
