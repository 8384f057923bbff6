#include "classic/IO.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <functional>
#include <iostream>
#include <span>

#include "classic/ProcessEnd.h"

namespace korvel {

namespace {

constexpr int kCommandLineError = 1;
constexpr unsigned kMaxThreads = 1024;
constexpr double kMostSecondsToRun = 1e6;

using Words = std::span<const char* const>;

struct Option {
    const char* word;
    const char* longWord;
    std::size_t argumentNum;
    std::function<void(Placer&, Words)> apply;
};

const std::array<Option, 5> kOptions = {{
    {"-f", "-filename", 1, [](Placer& p, Words words) { p.params.setInputName(words[0]); }},
    {"-o", "-output", 1, [](Placer& p, Words words) { p.params.setOutputName(words[0]); }},
    // The help text announces height and width; width and height is what is read, on purpose.
    {"-a", "-area", 2,
     [](Placer& p, Words words) {
         p.params.setDieWidth(static_cast<float>(std::stod(words[0])));
         p.params.setDieHight(static_cast<float>(std::stod(words[1])));
         p.params.setAreaConst();
     }},
    {"-s", "-statistic", 0, [](Placer& p, Words) { p.setStatistics(); }},
    {"-p", "-plot", 0, [](Placer& p, Words) { p.setPlot(); }},
}};

// The number of threads in a word of digits, or 0 when it is none from 1 to kMaxThreads.
unsigned threadNum(const std::string& word) {
    const bool digitsOnly = word.find_first_not_of("0123456789") == std::string::npos;
    if (word.empty() || word.size() > 4 || !digitsOnly) {
        return 0;
    }
    const auto number = static_cast<unsigned>(std::stoul(word));
    return number <= kMaxThreads ? number : 0;
}

// The seconds in a decimal number, or 0 when it is none above 0 and up to kMostSecondsToRun.
double secondNum(const std::string& word) {
    const char* const end = word.data() + word.size();
    double seconds = 0.0;
    const auto [rest, error] = std::from_chars(word.data(), end, seconds, std::chars_format::fixed);
    const bool isNumber = rest == end && error == std::errc();
    return isNumber && seconds > 0.0 && seconds <= kMostSecondsToRun ? seconds : 0.0;
}

// What the classic command line does not know.
struct LongOptions {
    unsigned threads = 0;  // as many as the machine has
    bool stats = false;
    double secondsToRun = 0.0;  // as many as it takes
};

struct LongOption {
    const char* word;
    std::size_t argumentNum;
    bool (*take)(LongOptions&, Words);  // false when the arguments are no good
};

constexpr std::array<LongOption, 3> kLongOptions = {{
    {"--threads", 1,
     [](LongOptions& options, Words words) {
         options.threads = threadNum(words[0]);
         return options.threads != 0;
     }},
    {"--stats", 0, [](LongOptions& options, Words) { return options.stats = true; }},
    {"--stop-after", 1,
     [](LongOptions& options, Words words) {
         options.secondsToRun = secondNum(words[0]);
         return options.secondsToRun != 0.0;
     }},
}};

const Option* findOption(const std::string& word) {
    const auto* const found = std::find_if(
        kOptions.begin(), kOptions.end(),
        [&](const Option& option) { return word == option.word || word == option.longWord; });
    return found == kOptions.end() ? nullptr : found;
}

// The number of words of the long option that `words` begin with; 0 when there is none, or not a
// good one.
std::size_t takeLongOption(Words words, LongOptions& taken) {
    const auto* const option = std::find_if(
        kLongOptions.begin(), kLongOptions.end(),
        [&](const LongOption& candidate) { return words[0] == std::string(candidate.word); });
    if (option == kLongOptions.end() || words.size() <= option->argumentNum ||
        !option->take(taken, words.subspan(1, option->argumentNum))) {
        return 0;
    }
    return 1 + option->argumentNum;
}

// Takes the long options out of the command line and leaves the classic one. What is wrong about
// them stays, to be found wrong. The words that an option takes are its own.
LongOptions takeLongOptions(std::vector<const char*>& words) {
    LongOptions taken;
    for (std::size_t at = 1; at < words.size();) {
        const auto here = words.begin() + static_cast<std::ptrdiff_t>(at);
        const std::size_t number = takeLongOption(Words(words).subspan(at), taken);
        if (number != 0) {
            words.erase(here, here + static_cast<std::ptrdiff_t>(number));
            continue;
        }
        const Option* const option = findOption(words[at]);
        at += 1 + (option != nullptr ? option->argumentNum : 0);
    }
    return taken;
}

}  // namespace

void IO::parseCommandLineParams(const int& argc, const char* const argv[]) {
    std::vector<const char*> words(argv, argv + argc);
    const LongOptions longOptions = takeLongOptions(words);
    const char* program = words.empty() ? "" : words[0];
    if (words.size() < 5) {
        const std::string first = words.size() == 2 ? words[1] : "";
        if (first == "-h" || first == "-help") {
            printHelp(program);
            throw ProcessEnd{kCommandLineError};
        }
        // "Tamrit" is what this message says, on purpose.
        placer.report() << std::endl
                        << "===   Error: Not enough arguments!   ===" << std::endl
                        << "Please refer to Tamrit HELP: " << program << " -h" << std::endl
                        << std::endl;
        throw ProcessEnd{kCommandLineError};
    }

    for (std::size_t at = 1; at < words.size();) {
        const std::string word = words[at++];
        const Option* const option = findOption(word);
        if (option == nullptr || words.size() - at < option->argumentNum) {
            endOnCommandLine("Error: Wrong arguments! ", program);
        }
        option->apply(placer, Words(words).subspan(at, option->argumentNum));
        at += option->argumentNum;
    }
    if (longOptions.threads != 0) {
        placer.setNumThreads(longOptions.threads);
    }
    if (longOptions.stats) {
        placer.setStats(std::cerr);
    }
    placer.setSecondsToRun(longOptions.secondsToRun);
    if (!placer.params.getAreaConst()) {
        endOnCommandLine("Error: Area argument is missing! ", program);
    }
    printSummary();
}

void IO::endOnCommandLine(const std::string& error, const char* program) {
    placer.report() << std::endl
                    << error << std::endl
                    << "Please refer to Korvel help: " << program << " -h" << std::endl
                    << std::endl;
    throw ProcessEnd{kCommandLineError};
}

void IO::printHelp(const char* program) {
    placer.report() << std::endl
                    << "----- Korvel help: -----" << std::endl
                    << "Usage: " << program
                    << " -f <input_path/filename> -o <output_filename> -a <height> <width>"
                    << std::endl
                    << "Obligatory arguments: " << std::endl
                    << "-f / -filename\t--\tPath and name of benchmark file" << std::endl
                    << "-o / -output\t--\tName of output file" << std::endl
                    << "-a / -area\t--\tHeight and width of interposer" << std::endl
                    << "Optional arguments: " << std::endl
                    << "-p / -plot\t--\tPlotting final placement (gnuplot is required)" << std::endl
                    << "-s / -statistic\t--\tSave statistic data into file \"statistics.txt\" "
                       "(automatically created)"
                    << std::endl
                    << std::endl;
}

void IO::printSummary() {
    const Params& params = placer.params;
    std::ostream& out = placer.report();
    out << std::endl
        << "===   Command line information   ===" << std::endl
        << std::endl
        << "Input Filename: " << params.getInputName() << std::endl
        << "Output Filename: " << params.getOutputName() << std::endl
        << "Placement Area:" << std::endl
        << "  Width: " << params.getDieWidth() << std::endl
        << "  Hight: " << params.getDieHight() << std::endl;
    if (placer.wantsStatistics()) {
        out << "Statistic will be saved to \"statistics.txt\"" << std::endl;
    }
    if (placer.wantsPlot()) {
        out << "Initial and final placements will be plotted (requires Gnuplot!)" << std::endl;
    }
    out << std::endl;
}

}  // namespace korvel
