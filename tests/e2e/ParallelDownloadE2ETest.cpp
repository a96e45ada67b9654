// Several packages fetched at once (the user setting ParallelDownloads) change nothing of what a
// run prints: the same lines in the same order as one fetch after another, a failure included.
#include "support/E2EGallery.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <QSettings>

#include <filesystem>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

class ParallelDownloads : public ServedGallery {
protected:
    void SetConnections(int connections) const
    {
        QSettings store(QString::fromStdString(m_config + "/zoltaworks/Curatool.conf"), QSettings::IniFormat);
        store.setValue(QStringLiteral("Software/ZOLTA Technologies Inc./Curatool/Network/ParallelDownloads"),
                       connections);
        store.sync();
        ASSERT_EQ(QSettings::NoError, store.status());
    }

    // The run into a fresh folder.
    RunResult RunWith(int connections, std::vector<std::string> arguments)
    {
        SetConnections(connections);
        const std::string target = m_base + "/target";
        fs::remove_all(target);
        arguments.insert(arguments.end(), {"-configuration", m_collection, "-destination", target, "-verbose"});
        return Curatool(arguments);
    }
};

}  // namespace

TEST_F(ParallelDownloads, PrintTheSameAtOneAndFourConnections)
{
    // A package the server does not have: its failure shows where it stands.
    const std::string gone = Category("maps").packages[0].file;
    fs::remove(m_source + "/" + gone);

    const std::vector<std::vector<std::string>> runs{{"--installall", "-allowdownload"},
                                                     {"--downloadall", "-source", m_url}};
    for (const auto& arguments : runs) {
        const RunResult one = RunWith(1, arguments);
        const RunResult four = RunWith(4, arguments);
        EXPECT_NE(std::string::npos, one.err.find("Failed: " + gone)) << one.err;
        EXPECT_NE(std::string::npos, one.out.find("Done.")) << one.out;
        EXPECT_EQ(OutcomeOf(one), OutcomeOf(four)) << arguments[0];
    }
}
