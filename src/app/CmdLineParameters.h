#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <functional>
#include <memory>
#include <vector>

class CConfiguration;
struct CCmdLineContext;

// The signature of every work flow: the parsed command line and the shared configuration in,
// the process's exit code out.
using CWorkFlowFunction = std::function<int(const CCmdLineContext&, std::shared_ptr<CConfiguration>)>;

// One command-line option. The parser hands it the option's name and value; GetError is asked
// once per registered name after all tokens are read.
class ICmdLineParam {
public:
    virtual ~ICmdLineParam() = default;
    virtual bool Process(const CAtlString& name, const CAtlString& value) = 0;
    virtual CAtlString GetError() const = 0;
};

// Names the parser uses when it reports to the error or the default parameter.
namespace CmdLineReserved {
inline constexpr const wchar_t* DefaultParam = L"__DEFAULT_PARAM";
inline constexpr const wchar_t* ParamNoValue = L"__PARAM_NO_VALUE";
inline constexpr const wchar_t* GenericError = L"__GENERIC_ERROR";
inline constexpr const wchar_t* UnknownParam = L"__UNKNOWN_PARAM";
}  // namespace CmdLineReserved

// -locale, -proxy, ...: the value is stored as it stands.
class CStringParameter : public virtual ICmdLineParam {
public:
    explicit CStringParameter(CAtlString* target);
    bool Process(const CAtlString& name, const CAtlString& value) override;
    CAtlString GetError() const override;

private:
    CAtlString* m_target;
};

// -source, -destination: a path kept as text, unchanged.
class CPathParameter : public virtual ICmdLineParam {
public:
    explicit CPathParameter(CAtlString* target);
    bool Process(const CAtlString& name, const CAtlString& value) override;
    CAtlString GetError() const override;

private:
    CAtlString* m_target;
};

// -c and the positional arguments: every value is appended.
class CMultiValueParameter : public virtual ICmdLineParam {
public:
    explicit CMultiValueParameter(std::vector<CAtlString>* target);
    bool Process(const CAtlString& name, const CAtlString& value) override;
    CAtlString GetError() const override;

private:
    std::vector<CAtlString>* m_target;
};

// -verbose and friends: present means true.
class CFlagParameter : public virtual ICmdLineParam {
public:
    explicit CFlagParameter(bool* target);
    bool Process(const CAtlString& name, const CAtlString& value) override;
    CAtlString GetError() const override;

private:
    bool* m_target;
};

// An option that chooses the work flow. Exclusive actions share one "chosen" flag, so the first
// on the command line wins and each later one keeps an "Illegal" complaint for the parser.
class CActionParameter : public virtual ICmdLineParam {
public:
    CActionParameter(bool* actionChosen, bool* elevation, bool elevationValue, CWorkFlowFunction* runner,
                     CWorkFlowFunction action, bool exclusive = true);
    bool Process(const CAtlString& name, const CAtlString& value) override;
    CAtlString GetError() const override;

    bool IsExclusive() const { return m_exclusive; }
    void SetExclusive(bool exclusive) { m_exclusive = exclusive; }

private:
    bool* m_actionChosen;
    bool* m_elevation;
    bool m_elevationValue;
    bool m_exclusive;
    CWorkFlowFunction* m_runner;
    CWorkFlowFunction m_action;
    CAtlString m_message;
};

// -configuration and -guid: the action runs at once, during the parse. Both share one "used"
// flag, so only the first of them, once, takes effect.
class CValueActionParameter : public virtual ICmdLineParam {
public:
    using Action = std::function<bool(const CAtlString&)>;

    CValueActionParameter(Action action, bool* used);
    bool Process(const CAtlString& name, const CAtlString& value) override;
    CAtlString GetError() const override;

private:
    Action m_action;
    bool* m_used;
    CAtlString m_message;
};

// Where the parser sends its complaints. Each becomes a line of `errors`; a missing value or a
// complaint collected at the end also switches the run to the usage text, an unknown option does not.
class CErrorParameter : public CActionParameter, public CMultiValueParameter {
public:
    CErrorParameter(bool* actionChosen, bool* elevation, CWorkFlowFunction* runner, CWorkFlowFunction usage,
                    std::vector<CAtlString>* errors);
    bool Process(const CAtlString& name, const CAtlString& value) override;
    CAtlString GetError() const override;
};
