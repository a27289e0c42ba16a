// Option parser: the settings a command line leaves behind. Each parse runs
// in a child process (the settings are process-wide and some paths end the
// process); the child prints the settings and the parent checks them.
#include <algorithm>
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

std::string Text(const char *value)
{
    return value == nullptr ? "(none)" : value;
}

std::string Join(const std::vector<std::string> &list)
{
    std::string joined;
    for (const std::string &entry : list)
        joined += "[" + entry + "]";
    return joined;
}

void DumpSettings()
{
    auto line = [](const char *key, const std::string &value) { printf("%s=%s\n", key, value.c_str()); };
    line("spi", Text(g_lpszSPIFileName));
    line("dpi", Text(g_lpszDPIFileName));
    line("ref", Text(g_lpszRefDPIFileName));
    line("compWithRef", std::to_string(compWithRef));
    line("srcroot", Text(g_lpszSrcRoot));
    line("prj", Text(g_lpszProjName));
    line("comp", Text(moduleListName));
    line("counts", std::to_string(g_bXCOUNTS));
    line("nopartial", std::to_string(g_bNoPartial));
    line("meter", std::to_string(bProgressMeter));
    line("demang", std::to_string(g_iDemangFlag));
    line("mname", Text(g_lpszMailName));
    line("maddr", Text(g_lpszMailAddr));
    line("txtf", Text(g_lpszTextOut));
    line("xmlf", Text(g_lpszXMLOut));
    line("txtb", Text(g_lpszbTextOut));
    line("xmlb", Text(g_lpszbXMLOut));
    line("txtfull", Text(g_lpszbfullTextOut));
    line("xmlfull", Text(g_lpszbfullXMLOut));
    line("dcg", Text(g_lpszCallGraphOut));
    line("callgraph", std::to_string(g_bCallGraph));
    line("html", std::to_string(html_output));
    line("nohtml", std::to_string(g_bNoHTML));
    line("oneline", Join(one_line_disable));
    line("begin", Join(start_disable_block));
    line("end", Join(end_disable_block));
    line("markers", std::to_string(Infeasible_markers_specified));
    line("floating", std::to_string(g_bIColorfloating));
    line("links", std::to_string(g_isLinksFlag));
    line("host", Text(g_lpszDBHostName));
    line("dbname", Text(g_lpszDBName));
    line("dbprj", Text(g_lpszDBProjName));
    line("user", Text(g_lpszDBUserName));
    line("passwd", Text(g_lpszDBPasswd));
    line("ext", Text(g_lpszOutFileExt));
    std::string colours;
    for (int c = COLOR_INFEASIBLE; c <= COLOR_INFO; ++c)
        colours += std::string(c > 1 ? " " : "") + takeBGColor(c);
    line("colours", colours);
}

Parsed Parse(const std::vector<std::string> &args)
{
    Parsed parsed;
    parsed.run = CaptureInChild([&] {
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

const char DEFAULT_COLOURS[] = "#90ee90 #ffffff #ffffff #fafad2 #ffff99 #ffcccc #ffffff";

TEST(Options, BareRunUsesEveryDefault)
{
    Parsed p = Parse({});
    ASSERT_TRUE(p.ok);
    EXPECT_EQ(p.run.status, 0);
    const std::map<std::string, std::string> expected = {
        {"spi", "vemtra.spi"}, {"dpi", "vemtra.dpi"}, {"ref", "(none)"}, {"compWithRef", "0"},
        {"srcroot", "(none)"}, {"prj", "(none)"}, {"comp", "(none)"}, {"counts", "0"}, {"nopartial", "0"},
        {"meter", "1"}, {"demang", "0"}, {"mname", "Nobody"}, {"maddr", "nobody"}, {"txtf", "(none)"},
        {"xmlf", "(none)"}, {"txtb", "(none)"}, {"xmlb", "(none)"}, {"txtfull", "(none)"}, {"xmlfull", "(none)"},
        {"dcg", "(none)"}, {"callgraph", "0"}, {"html", "1"}, {"nohtml", "0"}, {"oneline", ""}, {"begin", ""},
        {"end", ""}, {"markers", "0"}, {"floating", "0"}, {"links", "0"}, {"host", "tvx_host"},
        {"dbname", "tvx_db"}, {"dbprj", "(none)"}, {"user", "(none)"}, {"passwd", "(none)"}, {"ext", "html"},
        {"colours", DEFAULT_COLOURS},
    };
    EXPECT_EQ(p.settings, expected);
    // The banner (two lines) and an empty line.
    EXPECT_EQ(std::count(p.run.err.begin(), p.run.err.end(), '\n'), 3);
    EXPECT_EQ(p.run.err.substr(p.run.err.size() - 2), "\n\n");
}

TEST(Options, EveryOptionReachesItsSetting)
{
    Parsed p = Parse({"-spi", "a.spi", "-dpi", "a.dpi", "-srcroot", "/src", "-demang", "-prj", "P", "-comp", "c.txt",
                      "-counts", "-nopmeter", "-txtfcvrg", "f.txt", "-xmlfcvrg", "f.xml", "-txtbcvrgfull", "bf.txt",
                      "-xmlbcvrgfull", "bf.xml", "-nohtml", "-txtbcvrg", "b.txt", "-xmlbcvrg", "b.xml", "-txtdcg",
                      "g.txt", "-tvx_host", "h", "-tvx_db_name", "n", "-tvx_db_prj", "pr", "-tvx_user", "u",
                      "-tvx_passwd", "pw", "-bcolor", "b", "-ccolor", "c", "-fcolor", "f", "-pcolor", "p",
                      "-ucolor", "u", "-xcolor", "x", "-icolor", "i"});
    ASSERT_TRUE(p.ok) << p.run.err;
    const std::map<std::string, std::string> some = {
        {"spi", "a.spi"}, {"dpi", "a.dpi"}, {"srcroot", "/src"}, {"demang", "1"}, {"prj", "P"},
        {"comp", "c.txt"}, {"counts", "1"}, {"meter", "0"}, {"txtf", "f.txt"}, {"xmlf", "f.xml"},
        {"txtfull", "bf.txt"}, {"xmlfull", "bf.xml"}, {"nohtml", "1"}, {"txtb", "b.txt"}, {"xmlb", "b.xml"},
        {"dcg", "g.txt"}, {"callgraph", "1"}, {"html", "0"}, {"links", "1"}, {"host", "h"}, {"dbname", "n"},
        {"dbprj", "pr"}, {"user", "u"}, {"passwd", "pw"}, {"colours", "x u c p b f i"},
    };
    for (const auto &[key, value] : some)
        EXPECT_EQ(p.settings[key], value) << key;
}

TEST(Options, OutputOptionsChooseTheRoad)
{
    EXPECT_EQ(Parse({"-txtbcvrgfull", "f"}).settings["html"], "1");
    EXPECT_EQ(Parse({"-xmlbcvrgfull", "f"}).settings["html"], "1");
    EXPECT_EQ(Parse({"-nohtml"}).settings["html"], "1");
    for (const char *fast : {"-txtfcvrg", "-xmlfcvrg", "-txtbcvrg", "-xmlbcvrg", "-txtdcg"})
        EXPECT_EQ(Parse({fast, "f"}).settings["html"], "0") << fast;
}

TEST(Options, OwnerNameFollowsAddressUntilNamed)
{
    Parsed address_only = Parse({"-maddr", "me@example.com"});
    EXPECT_EQ(address_only.settings["maddr"], "me@example.com");
    EXPECT_EQ(address_only.settings["mname"], "me@example.com");

    Parsed name_first = Parse({"-mname", "Me", "-maddr", "me@example.com"});
    EXPECT_EQ(name_first.settings["mname"], "Me");
    EXPECT_EQ(name_first.settings["maddr"], "me@example.com");

    Parsed address_first = Parse({"-maddr", "me@example.com", "-mname", "Me"});
    EXPECT_EQ(address_first.settings["mname"], "Me");

    Parsed name_only = Parse({"-mname", "Me"});
    EXPECT_EQ(name_only.settings["maddr"], "nobody");
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
    const std::string warnings =
        "WARNING: option -ref overrides option -nopartial.\nWARNING: option -ref overrides option -counts.\n";
    EXPECT_EQ(p.run.err.substr(0, warnings.size()), warnings);

    Parsed counts_only = Parse({"-ref", "old.dpi", "-counts"});
    EXPECT_EQ(counts_only.run.err.rfind("WARNING: option -ref overrides option -counts.\nTarsk(R)", 0), 0u)
        << counts_only.run.err;
}

TEST(Options, ColoursAndNoPartial)
{
    // The partial colour follows the covered colour wherever -ccolor stands.
    EXPECT_EQ(Parse({"-nopartial", "-ccolor", "red"}).settings["colours"],
              "#90ee90 #ffffff red red #ffff99 #ffcccc #ffffff");
    EXPECT_EQ(Parse({"-pcolor", "tan", "-nopartial"}).settings["colours"],
              "#90ee90 #ffffff #ffffff #ffffff #ffff99 #ffcccc #ffffff");
    EXPECT_EQ(Parse({"-xcolor", "a", "-xcolor", "b"}).settings["colours"],
              "b #ffffff #ffffff #fafad2 #ffff99 #ffcccc #ffffff");

    Parsed floating = Parse({"-icolor", "floating"});
    EXPECT_EQ(floating.settings["floating"], "1");
    EXPECT_EQ(floating.settings["colours"], DEFAULT_COLOURS);
}

TEST(Options, ValuesAreTakenWhateverTheyLookLike)
{
    Parsed p = Parse({"-spi", "-dpi", "-counts", "-tvx_db_prj", "-nopmeter"});
    ASSERT_TRUE(p.ok);
    EXPECT_EQ(p.settings["spi"], "-dpi");
    EXPECT_EQ(p.settings["dpi"], "vemtra.dpi");
    EXPECT_EQ(p.settings["counts"], "1");
    EXPECT_EQ(p.settings["dbprj"], "-nopmeter");
    EXPECT_EQ(p.settings["meter"], "1");

    Parsed host_last = Parse({"-tvx_host"});
    ASSERT_TRUE(host_last.ok);
    EXPECT_EQ(host_last.settings["links"], "1");
    EXPECT_EQ(host_last.settings["host"], "tvx_host");
}

TEST(Options, RepeatsReplaceOrAccumulate)
{
    Parsed p = Parse({"-prj", "one", "-prj", "two", "-onelinedsbl", "A", "-beginblkdsbl", "B", "-onelinedsbl", "A",
                      "-endblkdsbl", "E", "-onelinedsbl", "C", "-dpi", "x", "-dpi", ""});
    ASSERT_TRUE(p.ok);
    EXPECT_EQ(p.settings["prj"], "two");
    EXPECT_EQ(p.settings["dpi"], "");
    EXPECT_EQ(p.settings["oneline"], "[A][A][C]");
    EXPECT_EQ(p.settings["begin"], "[B]");
    EXPECT_EQ(p.settings["end"], "[E]");
    EXPECT_EQ(p.settings["markers"], "1");
}

}  // namespace
