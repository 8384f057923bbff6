// The command line: what is taken, and the exact words for what is not.

#include "support/helpers.h"

namespace korvel::test {
namespace {

struct Parsed {
    int status;  // -1: accepted
    std::string text;
    Params params;
};

Parsed parse(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words{"korvel"};
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    std::vector<const char*> argv;
    for (const std::string& word : words) {
        argv.push_back(word.c_str());
    }
    std::ostringstream report;
    Placer placer(0.0F, report);
    int status = -1;
    try {
        IO(placer).parseCommandLineParams(static_cast<int>(argv.size()), argv.data());
    } catch (const ProcessEnd& end) {
        status = end.status;
    }
    return {status, report.str(), placer.params};
}

std::string error(const std::string& text) {
    return "\n" + text + "\nPlease refer to Korvel help: korvel -h\n\n";
}
const std::string kTooFew =
    "\n===   Error: Not enough arguments!   ===\nPlease refer to Tamrit HELP: korvel -h\n\n";
const std::string kWrong = error("Error: Wrong arguments! ");
const std::string kNoArea = error("Error: Area argument is missing! ");
const std::string kHelp =
    "\n----- Korvel help: -----\n"
    "Usage: korvel -f <input_path/filename> -o <output_filename> -a <height> <width>\n"
    "Obligatory arguments: \n"
    "-f / -filename\t--\tPath and name of benchmark file\n"
    "-o / -output\t--\tName of output file\n"
    "-a / -area\t--\tHeight and width of interposer\n"
    "Optional arguments: \n"
    "-p / -plot\t--\tPlotting final placement (gnuplot is required)\n"
    "-s / -statistic\t--\tSave statistic data into file \"statistics.txt\" (automatically "
    "created)\n\n";

TEST(CommandLine, ErrorsAndHelpEndWithStatus1) {
    const std::pair<const char*, const std::string&> cases[] = {
        {"", kTooFew},
        {"-h", kHelp},
        {"-help", kHelp},
        {"-h --threads 1", kHelp},
        {"--threads 1 -h", kHelp},
        {"-h -s", kTooFew},
        {"-f x", kTooFew},
        {"-a 10 10", kTooFew},
        {"-a 10 10 --threads 2", kTooFew},
        {"-f b -o r -s -p", kNoArea},
        {"-f b -o r --threads 2", kNoArea},
        {"-f --threads -o x", kNoArea},  // an option's argument is its own, whatever it says
        {"-f b -o r -a 10 10 -x", kWrong},
        {"-f b -o r -a 10 10 -h", kWrong},
        {"-f b -o r -a 10 10 stray", kWrong},
        {"-o r -a 10 10 -f", kWrong},
        {"-f b -o r -a 10", kWrong},
        {"-f b -a 10 10 --threads", kWrong},
        {"-f b -a 10 10 --threads 0", kWrong},
        {"-f b -a 10 10 --threads 1025", kWrong},
        {"-f b -a 10 10 --threads 99999999999999999999", kWrong},
        {"-f b -a 10 10 --threads -1", kWrong},
        {"-f b -a 10 10 --threads +4", kWrong},
        {"-f b -a 10 10 --threads 4x", kWrong},
        {"-f b -a 10 10 --threads=4", kWrong},
        {"-f b -a 10 10 --stop-after", kWrong},
        {"-f b -a 10 10 --stop-after 0", kWrong},
        {"-f b -a 10 10 --stop-after -1", kWrong},
        {"-f b -a 10 10 --stop-after 1000001", kWrong},
        {"-f b -a 10 10 --stop-after nan", kWrong},
        {"-f b -a 10 10 --stop-after 2s", kWrong},
    };
    for (const auto& [line, text] : cases) {
        const Parsed parsed = parse(line);
        EXPECT_EQ(parsed.status, 1) << line;
        EXPECT_EQ(parsed.text, text) << line;
    }
}

TEST(CommandLine, TheSummaryShowsWhatWasTaken) {
    const std::string head = "\n===   Command line information   ===\n\n";
    const Parsed plain = parse("-f dir/b -o r -a 100 50.5");
    EXPECT_EQ(plain.status, -1);
    EXPECT_EQ(plain.text, head +
                              "Input Filename: dir/b\nOutput Filename: r\nPlacement Area:\n"
                              "  Width: 100\n  Hight: 50.5\n\n");
    EXPECT_EQ(plain.params.getDieHight(), 50.5F);

    // Long forms, the last word counts, no names, most threads.
    const Parsed all = parse("-area 1 2 -statistic -plot -area 3 4 --threads 1 --threads 1024");
    EXPECT_EQ(all.status, -1);
    EXPECT_EQ(all.text, head +
                            "Input Filename: \nOutput Filename: \nPlacement Area:\n"
                            "  Width: 3\n  Hight: 4\n"
                            "Statistic will be saved to \"statistics.txt\"\n"
                            "Initial and final placements will be plotted (requires Gnuplot!)\n\n");
    EXPECT_EQ(parse("-filename b -output r --threads 3 -a 1e2 5").params.getDieWidth(), 100);
}

TEST(CommandLine, NumbersThatAreNoneThrow) {
    EXPECT_THROW(parse("-f b -o r -a wide 50"), std::invalid_argument);
    EXPECT_THROW(parse("-f b -o r -a 10 1e999"), std::out_of_range);
}

}  // namespace
}  // namespace korvel::test
