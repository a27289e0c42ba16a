// Option parser: the settings a command line leaves behind. Each parse runs
// in a child process (the settings are process-wide and some paths end the
// process); the child prints the settings and the parent checks them. (The
// defaults show in the end-to-end cases, bad command lines in the
// command-line cases.)
#include <cstdio>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "driver/options.h"
#include "driver/settings.h"
#include "report/colors.h"
#include "tests/support/capture.h"

using testsupport::CaptureInChild;
using testsupport::Captured;

namespace {

struct Parsed {
    Captured run;
    std::map<std::string, std::string> settings;  // empty when the parse failed
    bool ok = false;
};

void DumpSettings()
{
    const std::pair<const char *, const char *> texts[] = {
        {"spi", g_lpszSPIFileName}, {"dpi", g_lpszDPIFileName}, {"ref", g_lpszRefDPIFileName},
        {"srcroot", g_lpszSrcRoot}, {"prj", g_lpszProjName}, {"comp", moduleListName},
        {"mname", g_lpszMailName}, {"maddr", g_lpszMailAddr}, {"txtf", g_lpszTextOut},
        {"xmlf", g_lpszXMLOut}, {"txtb", g_lpszbTextOut}, {"xmlb", g_lpszbXMLOut},
        {"txtfull", g_lpszbfullTextOut}, {"xmlfull", g_lpszbfullXMLOut}, {"dcg", g_lpszCallGraphOut},
        {"host", g_lpszDBHostName}, {"dbname", g_lpszDBName}, {"dbprj", g_lpszDBProjName},
        {"user", g_lpszDBUserName}, {"passwd", g_lpszDBPasswd}, {"ext", g_lpszOutFileExt},
    };
    for (const auto &[key, value] : texts)
        printf("%s=%s\n", key, value != nullptr ? value : "(none)");
    const std::pair<const char *, int> flags[] = {
        {"compWithRef", compWithRef}, {"counts", g_bXCOUNTS}, {"nopartial", g_bNoPartial},
        {"meter", bProgressMeter}, {"demang", g_iDemangFlag}, {"callgraph", g_bCallGraph},
        {"html", html_output}, {"nohtml", g_bNoHTML}, {"markers", Infeasible_markers_specified},
        {"floating", g_bIColorfloating}, {"links", g_isLinksFlag},
    };
    for (const auto &[key, value] : flags)
        printf("%s=%d\n", key, value);
    const std::pair<const char *, const std::vector<std::string> *> lists[] = {
        {"oneline", &one_line_disable}, {"begin", &start_disable_block}, {"end", &end_disable_block}};
    for (const auto &[key, entries] : lists) {
        printf("%s=", key);
        for (const std::string &entry : *entries)
            printf("[%s]", entry.c_str());
        printf("\n");
    }
    printf("colours=");
    for (int c = COLOR_INFEASIBLE; c <= COLOR_INFO; ++c)
        printf("%s%s", c > COLOR_INFEASIBLE ? " " : "", takeBGColor(c));
    printf("\n");
}

Parsed Parse(const std::vector<std::string> &args)
{
    Parsed parsed;
    parsed.run = CaptureInChild([&] {
        // The marker lists start empty in a fresh run, whatever other tests
        // of this process left in them.
        one_line_disable.clear();
        start_disable_block.clear();
        end_disable_block.clear();
        Infeasible_markers_specified = 0;
        std::vector<std::string> words = {"vemcov"};
        words.insert(words.end(), args.begin(), args.end());
        std::vector<char *> argv;
        for (std::string &word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        bool ok = bParseCommandLine(static_cast<int>(words.size()), argv.data());
        printf("%s\n", ok ? "true" : "false");
        if (ok)
            DumpSettings();
    });
    std::istringstream lines(parsed.run.out);
    std::string line;
    std::getline(lines, line);
    parsed.ok = line == "true";
    while (std::getline(lines, line)) {
        size_t equals = line.find('=');
        parsed.settings[line.substr(0, equals)] = line.substr(equals + 1);
    }
    return parsed;
}

// The settings of `args` named in `expected` (key -> value).
void ExpectSettings(const std::vector<std::string> &args, const std::map<std::string, std::string> &expected)
{
    Parsed p = Parse(args);
    ASSERT_TRUE(p.ok) << p.run.err;
    for (const auto &[key, value] : expected)
        EXPECT_EQ(p.settings[key], value) << key;
}

const char DEFAULT_COLOURS[] = "#90ee90 #ffffff #ffffff #fafad2 #ffff99 #ffcccc #ffffff";

TEST(Options, EveryOptionReachesItsSetting)
{
    ExpectSettings({"-spi", "a.spi", "-dpi", "a.dpi", "-srcroot", "/src", "-demang", "-prj", "P", "-comp", "c.txt",
                    "-counts", "-nopmeter", "-txtfcvrg", "f.txt", "-xmlfcvrg", "f.xml", "-txtbcvrgfull", "bf.txt",
                    "-xmlbcvrgfull", "bf.xml", "-nohtml", "-txtbcvrg", "b.txt", "-xmlbcvrg", "b.xml", "-txtdcg",
                    "g.txt", "-tvx_host", "h", "-tvx_db_name", "n", "-tvx_db_prj", "pr", "-tvx_user", "u",
                    "-tvx_passwd", "pw", "-bcolor", "b", "-ccolor", "c", "-fcolor", "f", "-pcolor", "p", "-ucolor",
                    "u", "-xcolor", "x", "-icolor", "i"},
                   {{"spi", "a.spi"}, {"dpi", "a.dpi"}, {"srcroot", "/src"}, {"demang", "1"}, {"prj", "P"},
                    {"comp", "c.txt"}, {"counts", "1"}, {"meter", "0"}, {"txtf", "f.txt"}, {"xmlf", "f.xml"},
                    {"txtfull", "bf.txt"}, {"xmlfull", "bf.xml"}, {"nohtml", "1"}, {"txtb", "b.txt"},
                    {"xmlb", "b.xml"}, {"dcg", "g.txt"}, {"callgraph", "1"}, {"html", "0"}, {"links", "1"},
                    {"host", "h"}, {"dbname", "n"}, {"dbprj", "pr"}, {"user", "u"}, {"passwd", "pw"},
                    {"colours", "x u c p b f i"}});
}

TEST(Options, OutputOptionsChooseTheRoad)
{
    for (const char *full : {"-txtbcvrgfull", "-xmlbcvrgfull"})
        ExpectSettings({full, "f", "-nohtml"}, {{"html", "1"}});
    for (const char *fast : {"-txtfcvrg", "-xmlfcvrg", "-txtbcvrg", "-xmlbcvrg", "-txtdcg"})
        ExpectSettings({fast, "f"}, {{"html", "0"}});
}

TEST(Options, OwnerNameFollowsAddressUntilNamed)
{
    ExpectSettings({"-maddr", "me@x"}, {{"maddr", "me@x"}, {"mname", "me@x"}});
    ExpectSettings({"-mname", "Me", "-maddr", "me@x"}, {{"maddr", "me@x"}, {"mname", "Me"}});
    ExpectSettings({"-maddr", "me@x", "-mname", "Me"}, {{"mname", "Me"}});
    ExpectSettings({"-mname", "Me"}, {{"maddr", "nobody"}});
}

TEST(Options, ReferenceOverridesNoPartialAndCounts)
{
    Parsed p = Parse({"-counts", "-nopartial", "-ref", "old.dpi"});
    ASSERT_TRUE(p.ok);
    EXPECT_EQ(p.settings["ref"], "old.dpi");
    EXPECT_EQ(p.settings["compWithRef"], "1");
    EXPECT_EQ(p.settings["nopartial"], "0");
    EXPECT_EQ(p.settings["counts"], "0");
    EXPECT_EQ(p.settings["colours"], DEFAULT_COLOURS) << "no partial colour change under -ref";
    // The warnings come before the banner, the -nopartial one first.
    EXPECT_EQ(p.run.err.rfind("WARNING: option -ref overrides option -nopartial.\n"
                              "WARNING: option -ref overrides option -counts.\nTarsk(R)",
                              0),
              0u)
        << p.run.err;
}

TEST(Options, ColoursAndNoPartial)
{
    // The partial colour follows the covered colour wherever -ccolor stands.
    ExpectSettings({"-nopartial", "-ccolor", "red"},
                   {{"colours", "#90ee90 #ffffff red red #ffff99 #ffcccc #ffffff"}});
    ExpectSettings({"-pcolor", "tan", "-nopartial"},
                   {{"colours", "#90ee90 #ffffff #ffffff #ffffff #ffff99 #ffcccc #ffffff"}});
    ExpectSettings({"-xcolor", "a", "-xcolor", "b"},
                   {{"colours", "b #ffffff #ffffff #fafad2 #ffff99 #ffcccc #ffffff"}});
    ExpectSettings({"-icolor", "floating"}, {{"floating", "1"}, {"colours", DEFAULT_COLOURS}});
}

TEST(Options, ValuesAreTakenWhateverTheyLookLike)
{
    ExpectSettings({"-spi", "-dpi", "-counts", "-tvx_db_prj", "-nopmeter"},
                   {{"spi", "-dpi"}, {"dpi", "vemtra.dpi"}, {"counts", "1"}, {"dbprj", "-nopmeter"}, {"meter", "1"},
                    {"links", "1"}});
    // Each of the test-database options alone turns the links on.
    ExpectSettings({"-tvx_host"}, {{"links", "1"}, {"host", "tvx_host"}});
    for (const char *option : {"-tvx_db_name", "-tvx_db_prj", "-tvx_user", "-tvx_passwd"})
        ExpectSettings({option, "v"}, {{"links", "1"}});
}

TEST(Options, RepeatsReplaceOrAccumulate)
{
    ExpectSettings({"-prj", "one", "-prj", "two", "-onelinedsbl", "A", "-beginblkdsbl", "B", "-onelinedsbl", "A",
                    "-endblkdsbl", "E", "-onelinedsbl", "C", "-dpi", "x", "-dpi", ""},
                   {{"prj", "two"}, {"dpi", ""}, {"oneline", "[A][A][C]"}, {"begin", "[B]"}, {"end", "[E]"},
                    {"markers", "1"}});
}

}  // namespace
