// Removal, registration and the start from a disc. Not written yet: each mode prints the parse
// complaints and reports success without doing anything until the installation engine is in place.
#include "CWorkFlow.h"

#include "CCmdLineContext.h"

int CWorkFlow::Uninstall(const CCmdLineContext& context, Configuration)
{
    PrintErrors(context.errors);
    return eSuccess;
}

int CWorkFlow::UninstallAll(const CCmdLineContext& context, Configuration)
{
    PrintErrors(context.errors);
    return eSuccess;
}

int CWorkFlow::Register(const CCmdLineContext& context, Configuration)
{
    PrintErrors(context.errors);
    return eSuccess;
}

int CWorkFlow::WaitForCD(const CCmdLineContext& context, Configuration)
{
    PrintErrors(context.errors);
    return eSuccess;
}
