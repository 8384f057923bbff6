// The picture of a placement: a gnuplot script and a data file for the nets, which are removed
// again once gnuplot has drawn them.

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "classic/Placer.h"

namespace korvel {

namespace {

constexpr const char* kDataFile = "nets.txt";

// A text as a gnuplot string. Nothing in a name may end the string and be taken for a command.
std::string gnuplotString(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'') {
            quoted += "''";
        } else if (c == '\n') {
            quoted += "'.\"\\n\".'";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

// A file name as one word for the shell, which is no option either.
std::string shellWord(const std::string& fileName) {
    std::string quoted = fileName.rfind('-', 0) == 0 ? "'./" : "'";
    for (const char c : fileName) {
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return quoted + "'";
}

// The lines of the nets: data sets in the data file, and the plot command's pieces that draw them.
class NetLines {
public:
    NetLines(std::ostream& script, std::ostream& data) : script(script), data(data) {}

    void add(Point from, Point to) {
        data << from.x << "  " << from.y << std::endl
             << to.x << "  " << to.y << std::endl
             << std::endl
             << std::endl;
        if (number > 0) {
            script << ", \\" << std::endl << "\t''\t";
        }
        script << "index " << number << " with linespoints ls 1 notitle";
        ++number;
    }

private:
    std::ostream& script;
    std::ostream& data;
    unsigned number = 0;
};

// A net of two pins as one line, a larger one as a star around the centroid of its placed pins.
void drawNet(const Net& net, NetLines& lines) {
    if (net.getNetDegree() == 2) {
        lines.add(net.getPinCoord(0), net.getPinCoord(1));
        return;
    }
    Point sum;
    for (const Pin* pin : net.getPins()) {
        if (pin->isPlaced()) {
            sum.x += pin->getCoord().x;
            sum.y += pin->getCoord().y;
        }
    }
    const auto placed = static_cast<float>(net.getPlacedPinsNum());
    const Point centroid{sum.x / placed, sum.y / placed};
    for (const Pin* pin : net.getPins()) {
        if (pin->isPlaced()) {
            lines.add(centroid, pin->getCoord());
        }
    }
}

}  // namespace

void Placer::plotUncomPlacementBlueGrayOrange(const BBNode& node, const std::string& suffix) {
    const std::string scriptName = params.getOutputName() + "_" + suffix + ".plt";
    out << std::endl << "===   Plot into the output file " << scriptName << "   ===" << std::endl;
    {
        std::ofstream script(scriptName);
        if (!script) {
            // The text names another file, on purpose.
            out << "ERROR: output.ps file could not be opened successfully" << std::endl;
        }
        std::ofstream data(kDataFile);
        writePlotScript(node, suffix, script, data);
    }
    out << std::endl << "\tPlotting..." << std::endl;
    const std::string command = "gnuplot " + shellWord(scriptName);
    [[maybe_unused]] const int status = std::system(command.c_str());
    std::remove(kDataFile);
    std::remove(scriptName.c_str());
}

void Placer::writePlotScript(const BBNode& node, const std::string& suffix, std::ostream& script,
                             std::ostream& data) const {
    const float width = params.getDieWidth();
    const float hight = params.getDieHight();
    script << "set terminal png size " << width * 0.6 << ", " << hight * 0.6
           << " enhanced font \"Helvetica,65\"" << std::endl
           << "set output " << gnuplotString(params.getOutputName() + "_" + suffix + ".png")
           << std::endl
           << std::endl
           << "set obj rect from 0,0 to " << width << ", " << hight
           << " fc rgb 'gray' fs solid 0.4 noborder" << std::endl;
    for (unsigned i = 0; i < node.numBlocks; ++i) {
        const Block& block = netlist.blocks[i];
        const auto [x, y] = block.getCoord();
        script << "set obj rect from " << x << "," << y << " to " << x + block.getWidthOriented()
               << "," << y + block.getHeightOriented()
               << " fc rgb 'skyblue' fs solid 0.8 border lc rgb 'royalblue' lw 12" << std::endl;
    }
    for (unsigned i = 0; i < node.numBlocks; ++i) {
        const Block& block = netlist.blocks[i];
        const auto [x, y] = block.getCoord();
        script << "set label " << gnuplotString(block.getName()) << " at "
               << x + block.getWidthOriented() * 0.125F << " , "
               << y + block.getHeightOriented() * 0.125F << " font \"Helvetica,42\" front"
               << std::endl;
    }
    script << "set style line 1 lc rgb 'orange' lt 1 lw 5 pt 7 ps 4" << std::endl
           << std::endl
           << "plot [0:" << width << "] [0:" << hight << "] NaN notitle, \\" << std::endl
           << "\t'" << kDataFile << "' ";
    NetLines lines(script, data);
    for (const Net& net : netlist.nets) {
        if (net.getPlacedPinsNum() > 1) {
            drawNet(net, lines);
        }
    }
    script << std::endl;
}

}  // namespace korvel
