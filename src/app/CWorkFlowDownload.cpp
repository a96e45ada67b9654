// Making a full or partial local copy of a source. Not written yet: each mode prints the parse
// complaints and reports success without doing anything until the installation engine is in place.
#include "CWorkFlow.h"

#include "CCmdLineContext.h"

int CWorkFlow::DownloadAll(const CCmdLineContext& context, Configuration)
{
    PrintErrors(context.errors);
    return eSuccess;
}

int CWorkFlow::DownloadSome(const CCmdLineContext& context, Configuration)
{
    PrintErrors(context.errors);
    return eSuccess;
}
