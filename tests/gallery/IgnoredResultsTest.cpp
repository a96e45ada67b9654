#include "GalleryLibrary.h"
#include "GalleryPlaces.h"
#include "TestEnvironment.h"
#include "TestText.h"

#include <gtest/gtest.h>

#include <QByteArray>

#include <atomic>
#include <new>

// Gallery texts are the only users of the nothrow array form: failing its n-th call stands for
// running out of memory at that point of the gallery code.
namespace {
std::atomic<int> g_failAt{0};
std::atomic<int> g_calls{0};
}  // namespace

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    if (g_failAt > 0 && ++g_calls == g_failAt)
        return nullptr;
    try {
        return ::operator new[](size);
    } catch (...) {
        return nullptr;
    }
}

namespace {

using namespace curatool::test;

// Whatever allocation fails while My Content is made, what is saved is whole or nothing.
TEST(IgnoredResultsTest, MyContentIsSavedWholeOrNotAtAll)
{
    const QByteArray oldHome = qgetenv("HOME");
    for (int failAt = 1; failAt <= 12; ++failAt) {
        SCOPED_TRACE(failAt);
        qputenv("HOME", QByteArray::fromStdString(MakeScratchDir("home")));
        g_calls = 0;
        g_failAt = failAt;
        static_cast<void>(GalleryLibraryInitialize());
        g_failAt = 0;
        GalleryLibraryShutdown();
        const std::string text = ReadFile(U(GetMyContentManifestPath().GetPath()));
        if (text.empty())
            continue;
        for (const char* part :
             {"default?manifest=My%20Content<", "default?organization=My%20Content<", "invalid/My%20Content<"})
            EXPECT_NE(text.find(part), std::string::npos) << part;
        const std::size_t title = text.find("<title>My Content</title>");
        EXPECT_NE(text.find("<title>My Content</title>", title + 1), std::string::npos);
    }
    qputenv("HOME", oldHome);
}

}  // namespace
