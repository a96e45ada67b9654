#include "app/CWorkFlow.h"

#include "app/CCmdLineContext.h"
#include "libZoltaAtl/CAtlStringA.h"
#include "foundation/CSettingsStore.h"

#include <cstdio>

namespace {

const char kUsageText[] =
    "\n"
    "Usage:\n"
    "Common options:\n"
    "\t[<-overrideproxy> [-proxy proxyhost:port]] [-username name] [-password pass] [-verbose]\n"
    "GUI:\n"
    "\t[-source path] {common options} [-authorized]\n"
    "Install everything:\n"
    "\t--installall [-destination path] <-source path | -allowdownload> <-configuration path | -guid gallery_id> "
    "[-remote] {common options}\n"
    "Install selected:\n"
    "\t--installsome [-destination path] <-source path | -allowdownload> [-remote] <-configuration path | -guid "
    "gallery_id> <-c alias1 [-c alias2 ...]> {common options}\n"
    "Create full local source:\n"
    "\t--dowloadall <-destination path> <-configuration path | -guid gallery_id> [-source url] {common options}\n"
    "Create partial local source:\n"
    "\t--dowloadsome <-destination path> <-configuration path | -guid gallery_id> [-source url] <-c alias1 [-c alias2 "
    "...]> {common options}\n"
    "Uninstall:\n"
    "\t--uninstall <-configuration path | -guid gallery_id>]\n"
    "Register with Scrivent:\n"
    "\t--register [-destination path] [-configuration path] [-remote]\n"
    "\n";

// The restart hand-over: one section, "count" and one value per argument.
const wchar_t kArgumentsSection[] = L"Software/ZOLTA Technologies Inc./Curatool/Temp";
const wchar_t kArgumentsStore[] = L"com.zoltaworks.Registry";
const bool kArgumentsUserScope = true;

}  // namespace

const char* CWorkFlow::UsageText()
{
    return kUsageText;
}

void CWorkFlow::PrintErrors(const std::vector<CAtlString>& errors)
{
    if (errors.empty())
        return;
    std::fputs("Errors in parameters:\n", stderr);
    for (const CAtlString& error : errors) {
        const CAtlStringA text(error.GetString());
        std::fprintf(stderr, "   %s\n", text.GetString());
    }
    std::fputs("\n", stderr);
    std::fflush(stderr);
}

int CWorkFlow::Usage(const CCmdLineContext& context, Configuration)
{
    PrintErrors(context.errors);
    std::fputs(kUsageText, stdout);
    std::fflush(stdout);
    return eUsage;
}

QStringList CWorkFlow::ArgumentsForRestart(const CCmdLineContext& context)
{
    QStringList arguments = context.rawArguments;
    for (const CAtlString& file : context.openedFiles)
        arguments << file.ToQString();
    return arguments;
}

bool CWorkFlow::StoreArguments(const QStringList& arguments)
{
    return CSettingsStore::WriteStringArray(kArgumentsUserScope, CAtlString(kArgumentsSection), arguments,
                                            CAtlString(kArgumentsStore)) == CSettingsStore::eStatusOk;
}

bool CWorkFlow::LoadArguments(QStringList& arguments)
{
    const CAtlString section(kArgumentsSection);
    const CAtlString store(kArgumentsStore);
    const bool ok =
        CSettingsStore::ReadStringArray(kArgumentsUserScope, section, arguments, store) == CSettingsStore::eStatusOk;
    // The hand-over serves one start only.
    CSettingsStore::DeleteSection(kArgumentsUserScope, section, store);
    return ok;
}
