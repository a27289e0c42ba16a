// project_generator.cpp -- synthetic C projects with their profiles.
#include "bench/project_generator.h"

#include <cstdio>
#include <filesystem>

namespace bench {
namespace {

// splitmix64: small, fast and the same everywhere.
class Random {
public:
    explicit Random(uint64_t seed) : state_(seed) {}
    uint64_t Next()
    {
        uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    int Below(int n) { return static_cast<int>(Next() % static_cast<uint64_t>(n)); }

private:
    uint64_t state_;
};

// Appends one line and returns its number (from 1).
int Line(std::string &text, int &line_no, const std::string &line)
{
    text += line;
    text += '\n';
    return ++line_no;
}

// A body statement that starts a block, with the column where the block's
// code begins.
struct Statement {
    std::string text;
    int column;
};

Statement BlockStatement(Random &random, int index)
{
    std::string v = "v" + std::to_string(index % 7);
    switch (random.Below(6)) {
    case 0:
        return {"    if (" + v + " > " + std::to_string(random.Below(100)) + ") {", 5};
    case 1:
        return {"    for (int i = 0; i < n; i++) { /* scan */", 5};
    case 2:
        return {"    " + v + " = lookup(table, \"key // not a comment\", " + v + ");", 5};
    case 3:
        return {"    while (" + v + "-- > 0) {  // drain", 5};
    case 4:
        return {"    } else {", 7};
    default:
        return {"    result += " + v + " * " + std::to_string(random.Below(1000)) + ";", 5};
    }
}

std::string PlainStatement(Random &random, int index)
{
    std::string v = "v" + std::to_string(index % 7);
    switch (random.Below(5)) {
    case 0:
        return "    /* keep the running total in range */";
    case 1:
        return "    " + v + " ^= (" + v + " << 3); // mix";
    case 2:
        return "    }";
    case 3:
        return "    log_value(\"" + v + "\", " + v + ");";
    default:
        return "    " + v + " += step;";
    }
}

}  // namespace

GeneratedProject GenerateProject(const ProjectShape &shape, const std::string &source_dir)
{
    GeneratedProject project;
    project.profile.runs = static_cast<uint32_t>(shape.runs);
    Random random(shape.seed);
    int body = shape.lines_per_function < 4 ? 4 : shape.lines_per_function;
    uint64_t address = 0x400000;

    for (int f = 0; f < shape.files; f++) {
        char name[32];
        snprintf(name, sizeof name, "module%05d.c", f);
        SourceFile source;
        source.path = source_dir + "/" + name;
        std::string &text = source.text;
        int line_no = 0;
        Line(text, line_no, "/*");
        Line(text, line_no, " * " + std::string(name) + " -- generated module " + std::to_string(f) + ".");
        Line(text, line_no, " */");
        Line(text, line_no, "#include <stdio.h>");
        Line(text, line_no, "#include \"module.h\"");
        Line(text, line_no, "");

        for (int k = 0; k < shape.functions_per_file; k++) {
            std::string function = "func_" + std::to_string(f) + "_" + std::to_string(k);
            Line(text, line_no, "// " + function + ": one step of the pipeline");
            int first = Line(text, line_no, "static int " + function + "(int *table, int n, int step)");
            Line(text, line_no, "{");
            std::vector<testsupport::BlockSpec> blocks;
            bool ran = random.Below(100) >= shape.uncovered_percent / 2;  // whole function never called
            blocks.push_back({ran ? 1 + random.Next() % 1000 : 0, static_cast<uint32_t>(first), 1});
            Line(text, line_no, "    int v0 = 0, v1 = 1, v2 = 2, v3 = 3, v4 = 4, v5 = 5, v6 = 6, result = 0;");
            for (int b = 0; b < body - 3; b++) {
                if (random.Below(3) == 0) {
                    Statement s = BlockStatement(random, b);
                    int at = Line(text, line_no, s.text);
                    uint64_t count = 0;
                    if (ran && random.Below(100) >= shape.uncovered_percent)
                        count = random.Next() % 100000;
                    blocks.push_back({count, static_cast<uint32_t>(at), static_cast<uint32_t>(s.column)});
                } else {
                    Line(text, line_no, PlainStatement(random, b));
                }
            }
            Line(text, line_no, "    return result;");
            Line(text, line_no, "}");
            Line(text, line_no, "");
            project.profile.Add(source.path, function, static_cast<uint32_t>(first), 'S')
                .Blocks(blocks)
                .Address(address);
            address += 0x40;
        }
        project.sources.push_back(source);
    }
    return project;
}

bool WriteProject(const GeneratedProject &project, const std::string &profile_dir)
{
    std::error_code error;
    std::filesystem::create_directories(profile_dir, error);
    for (const SourceFile &source : project.sources) {
        std::filesystem::create_directories(std::filesystem::path(source.path).parent_path(), error);
        if (!testsupport::WriteBytes(source.path, source.text))
            return false;
    }
    return testsupport::WriteBytes(profile_dir + "/vemtra.spi", testsupport::SpiText(project.profile)) &&
           testsupport::WriteBytes(profile_dir + "/vemtra.dpi", testsupport::DpiBytes(project.profile));
}

}  // namespace bench
