#include "app/CmdLineParameters.h"

#include <utility>

namespace {

CAtlString Quoted(const wchar_t* prefix, const CAtlString& text)
{
    CAtlString result(prefix);
    result += L"\"";
    result += text;
    result += L"\"";
    return result;
}

}  // namespace

CStringParameter::CStringParameter(CAtlString* target)
    : m_target(target)
{}

bool CStringParameter::Process(const CAtlString&, const CAtlString& value)
{
    *m_target = value;
    return true;
}

CAtlString CStringParameter::GetError() const
{
    return CAtlString();
}

CPathParameter::CPathParameter(CAtlString* target)
    : m_target(target)
{}

bool CPathParameter::Process(const CAtlString&, const CAtlString& value)
{
    *m_target = value;
    return true;
}

CAtlString CPathParameter::GetError() const
{
    return CAtlString();
}

CMultiValueParameter::CMultiValueParameter(std::vector<CAtlString>* target)
    : m_target(target)
{}

bool CMultiValueParameter::Process(const CAtlString&, const CAtlString& value)
{
    m_target->push_back(value);
    return true;
}

CAtlString CMultiValueParameter::GetError() const
{
    return CAtlString();
}

CFlagParameter::CFlagParameter(bool* target)
    : m_target(target)
{}

bool CFlagParameter::Process(const CAtlString&, const CAtlString&)
{
    *m_target = true;
    return true;
}

CAtlString CFlagParameter::GetError() const
{
    return CAtlString();
}

CActionParameter::CActionParameter(bool* actionChosen, bool* elevation, bool elevationValue, CWorkFlowFunction* runner,
                                   CWorkFlowFunction action, bool exclusive)
    : m_actionChosen(actionChosen),
      m_elevation(elevation),
      m_elevationValue(elevationValue),
      m_exclusive(exclusive),
      m_runner(runner),
      m_action(std::move(action))
{}

bool CActionParameter::Process(const CAtlString& name, const CAtlString&)
{
    if (!m_exclusive || !*m_actionChosen) {
        *m_runner = m_action;
        *m_actionChosen = true;
        *m_elevation = m_elevationValue;
    } else {
        m_message = Quoted(L"Illegal: ", name);
    }
    return true;
}

CAtlString CActionParameter::GetError() const
{
    return m_message;
}

CValueActionParameter::CValueActionParameter(Action action, bool* used)
    : m_action(std::move(action)),
      m_used(used)
{}

bool CValueActionParameter::Process(const CAtlString& name, const CAtlString& value)
{
    if (!m_action)
        return false;
    if (!*m_used) {
        *m_used = true;
        return m_action(value);
    }
    m_message = Quoted(L"Illegal: ", name);
    return true;
}

CAtlString CValueActionParameter::GetError() const
{
    return m_message;
}

CErrorParameter::CErrorParameter(bool* actionChosen, bool* elevation, CWorkFlowFunction* runner,
                                 CWorkFlowFunction usage, std::vector<CAtlString>* errors)
    : CActionParameter(actionChosen, elevation, false, runner, std::move(usage), false),
      CMultiValueParameter(errors)
{}

bool CErrorParameter::Process(const CAtlString& name, const CAtlString& value)
{
    const bool noValue = name == CmdLineReserved::ParamNoValue;
    const bool generic = name == CmdLineReserved::GenericError;
    if (noValue || generic)
        CActionParameter::Process(name, value);

    CAtlString message = value;
    if (noValue)
        message = Quoted(L"Missing value: ", value);
    else if (name == CmdLineReserved::UnknownParam)
        message = Quoted(L"Unknown: ", value);
    else if (name == CmdLineReserved::DefaultParam)
        message = Quoted(L"Ignored: ", value);

    CMultiValueParameter::Process(name, message);
    return true;
}

CAtlString CErrorParameter::GetError() const
{
    return CAtlString();
}
