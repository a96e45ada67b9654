// The window-based start and the unattended installs. Not written yet: each mode prints the parse
// complaints and reports success without doing anything until the installation engine is in place.
#include "CWorkFlow.h"

#include "CCmdLineContext.h"

int CWorkFlow::Normal(const CCmdLineContext& context, Configuration)
{
    PrintErrors(context.errors);
    return eSuccess;
}

int CWorkFlow::InstallAll(const CCmdLineContext& context, Configuration)
{
    PrintErrors(context.errors);
    return eSuccess;
}

int CWorkFlow::InstallSome(const CCmdLineContext& context, Configuration)
{
    PrintErrors(context.errors);
    return eSuccess;
}
