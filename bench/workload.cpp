#include "workload.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace bench {

namespace {

/// Small and the same everywhere, unlike the library's distributions.
class Random
{
public:
    unsigned below(unsigned limit)
    {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return unsigned((state >> 33) % limit);
    }

private:
    uint64_t state = 42;
};

const char *const names[] = {"value",  "index",  "buffer", "count",  "lineWidth", "document",
                             "m_size", "result", "cursor", "offset", "isVisible", "parent"};
const char *const types[] = {"int", "const char *", "double", "bool", "unsigned long", "QString"};

std::string name(Random *random)
{
    return names[random->below(12)];
}

std::string number(Random *random)
{
    static const char *const forms[] = {"0", "17", "0x7fU", "3.14159", "1e-9", "0755", "42UL"};
    return forms[random->below(7)];
}

std::string statement(Random *random)
{
    switch (random->below(8)) {
    case 0:
        return "if (" + name(random) + " == " + number(random) + " && !" + name(random) + ")";
    case 1:
        return "return " + name(random) + " + " + number(random) + ";";
    case 2:
        return std::string(types[random->below(6)]) + ' ' + name(random) + " = " + name(random) +
               "(" + name(random) + ", " + number(random) + ");";
    case 3:
        return name(random) + "->" + name(random) + "(\"" + name(random) + " \\\"of\\\" " +
               name(random) + "\\n\", '\\t');";
    case 4:
        return "// the " + name(random) + " of this " + name(random) + " is \"kept\" here";
    case 5:
        return "for (int i = 0; i < " + name(random) + "; ++i) {";
    case 6:
        return "/* " + name(random) + " */ " + name(random) + "[i] |= " + number(random) + ";";
    default:
        return name(random) + " = " + name(random) + " ? " + name(random) + " : nullptr;";
    }
}

void appendLine(std::string *text, unsigned line, Random *random)
{
    switch (line % 40) {
    case 0:
        *text += "#include <" + name(random) + ".h>\n";
        return;
    case 1:
        *text += "/* A comment over\n   several lines about " + name(random) + "\n */\n";
        return;
    case 2:
        *text += '\n';
        return;
    case 3:
        *text += std::string(types[random->below(6)]) + " Class::" + name(random) + "(int " +
                 name(random) + ")\n{\n";
        return;
    case 39:
        *text += "}\n\n";
        return;
    default:
        text->append(4 * (1 + random->below(4)), ' ');
        *text += statement(random) + '\n';
    }
}

std::string cached(const std::string &file, std::string (*make)(size_t, int), size_t bytes,
                   int extra)
{
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "vesk-bench";
    std::filesystem::create_directories(folder);
    const std::filesystem::path path = folder / file;
    if (!std::filesystem::exists(path)) {
        const std::filesystem::path part = path.string() + ".part";
        const std::string text = make(bytes, extra);
        std::ofstream(part, std::ios::binary).write(text.data(), std::streamsize(text.size()));
        std::filesystem::rename(part, path);
    }
    return path.string();
}

} // namespace

std::string sourceText(size_t bytes)
{
    Random random;
    std::string text;
    text.reserve(bytes + 200);
    for (unsigned line = 0; text.size() < bytes; ++line)
        appendLine(&text, line, &random);
    return text;
}

std::string sourceFile(int megabytes)
{
    if (const char *file = std::getenv("VESK_BENCH_FILE"))
        return file;
    return cached(
        "source-" + std::to_string(megabytes) + ".cpp",
        [](size_t bytes, int) { return sourceText(bytes); }, size_t(megabytes) * 1000000, 0);
}

std::string openFile(int megabytes)
{
    return cached(
        "open-" + std::to_string(megabytes) + ".cpp",
        [](size_t bytes, int) {
            std::string text = sourceText(bytes);
            for (size_t at = 0; (at = text.find("*/", at)) != std::string::npos;)
                text.replace(at, 2, "||");
            for (size_t at = 0; (at = text.find("/*", at)) != std::string::npos;)
                text.replace(at, 2, "||");
            return text;
        },
        size_t(megabytes) * 1000000, 0);
}

std::string longLineFile(size_t bytes)
{
    return cached(
        "long-line-" + std::to_string(bytes) + ".cpp",
        [](size_t wanted, int) {
            std::string text = sourceText(wanted);
            for (char &c : text) {
                if (c == '\n')
                    c = ' ';
            }
            // A comment to the line's end would leave nothing to colour.
            for (size_t at = 0; (at = text.find("//", at)) != std::string::npos;)
                text.replace(at, 2, "+ ");
            return text;
        },
        bytes, 0);
}

std::string needleFile(size_t bytes, int hits)
{
    return cached(
        "needles-" + std::to_string(bytes) + ".cpp",
        [](size_t wanted, int count) {
            const std::string source = sourceText(wanted);
            const size_t step = wanted / size_t(count);
            std::string text;
            for (int i = 0; i < count; ++i)
                text += source.substr(size_t(i) * step, step) + "needle";
            return text;
        },
        bytes, hits);
}

double peakMemory()
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmHWM:", 0) == 0)
            return std::atof(line.c_str() + 6) * 1024;
    }
    return 0;
}

} // namespace bench
