#include "app/CCmdLineParser.h"

#include "app/CmdLineParameters.h"

bool CCmdLineParser::StripOptionPrefix(CAtlString& token)
{
    if (token.IsEmpty())
        return false;
    const wchar_t first = token.GetAt(0);
    if (first == L'\\') {
        token = token.Mid(1);
        return true;
    }
    if (first != L'-')
        return false;
    const bool doubleDash = token.GetLength() > 1 && token.GetAt(1) == L'-';
    token = token.Mid(doubleDash ? 2 : 1);
    return true;
}

bool CCmdLineParser::Report(const wchar_t* reservedName, const CAtlString& text)
{
    if (!m_errorParam)
        return false;
    return m_errorParam->Process(CAtlString(reservedName), text);
}

bool CCmdLineParser::ProcessUnmatched(const CAtlString& name)
{
    const int colon = name.Find(L':');
    if (colon < 0)
        return Report(CmdLineReserved::UnknownParam, name);

    // Only value options take the "name:value" form; a flag written this way is unknown.
    const CAtlString optionName = name.Left(colon);
    const CAtlString value = name.Mid(colon + 1);
    const auto found = m_valueParams.find(optionName);
    if (found == m_valueParams.end())
        return Report(CmdLineReserved::UnknownParam, optionName);
    return found->second->Process(optionName, value);
}

bool CCmdLineParser::CollectComplaints()
{
    bool result = true;
    auto ask = [&](ICmdLineParam* param) {
        if (!param)
            return;
        const CAtlString complaint = param->GetError();
        if (complaint.IsEmpty())
            return;
        Report(CmdLineReserved::GenericError, complaint);
        result = false;
    };
    // One question per registered name: an object under several names may complain several times.
    ask(m_defaultParam);
    for (const auto& entry : m_valueParams)
        ask(entry.second);
    for (const auto& entry : m_flagParams)
        ask(entry.second);
    return result;
}

bool CCmdLineParser::Parse(const std::vector<CAtlString>& arguments)
{
    bool result = true;
    for (size_t i = 1; i < arguments.size(); ++i) {
        CAtlString token = arguments[i];
        if (!StripOptionPrefix(token)) {
            if (!m_defaultParam)
                return false;
            result = m_defaultParam->Process(CAtlString(CmdLineReserved::DefaultParam), token) && result;
            continue;
        }

        const auto valueParam = m_valueParams.find(token);
        if (valueParam != m_valueParams.end()) {
            CAtlString next;
            const bool hasValue = i + 1 < arguments.size() && !StripOptionPrefix(next = arguments[i + 1]);
            if (!hasValue) {
                // The following option, if any, is looked at again as an option of its own.
                Report(CmdLineReserved::ParamNoValue, token);
                result = false;
                continue;
            }
            result = valueParam->second->Process(token, arguments[i + 1]) && result;
            ++i;
            continue;
        }

        const auto flagParam = m_flagParams.find(token);
        if (flagParam != m_flagParams.end()) {
            result = flagParam->second->Process(token, CAtlString()) && result;
            continue;
        }

        result = ProcessUnmatched(token) && result;
    }
    return CollectComplaints() && result;
}
