// When which temperature: a schedule is a number of coolings, one after the other. The first ones
// begin with a start each; those after them heat the best layout up again, not as far, and cool it
// down. Temperatures fall by the same factor in the same time.
//
// In which range of temperatures layouts settle differs between designs. So the usual
// schedule, and the one of expanded starts, begin with a quick cooling over the whole range. From
// the lengths that are noted in it the schedule learns where the others are to begin and to end, to
// spend their time where something happens. A value, for one thread.
#pragma once

#include <array>

namespace korvel {

class CoolingSchedule {
public:
    enum class Kind : unsigned char {
        Usual,
        SingleStart,     // one cooling, for a short time
        FewDies,         // stays warmer: exact coordinates do for few dies what the coldest moves
                         // would, and while it is warm they can still leave the layout at hand
        CoarseLevel,     // many quick starts
        ExpandedStarts,  // for starts that are good on the whole and are not to be lost
    };

    explicit CoolingSchedule(Kind kind);

    struct Point {
        unsigned cooling;  // from 0
        double cooled;     // how much of the cooling is over, from 0 to below 1
    };
    // `progress` is how much of the schedule is over, from 0 to below 1.
    Point at(double progress) const;
    bool isFromStart(unsigned cooling) const { return cooling < shape.starts; }
    // In parts of what random moves change a random layout by.
    double temperature(Point point) const;

    // The length of the layout then.
    void note(Point point, double length);
    // When the first cooling is over: adapts the others to what was noted, and their number.
    void learn();

private:
    // Places in the whole range of temperatures, from 0 (hot) to 1 (cold), on a logarithmic scale.
    struct Span {
        double begin;     // of coolings from starts
        double reheated;  // where reheated layouts begin
        double end;       // of both
    };
    // Phases are parts of the schedule, from 0 to 1.
    struct Shape {
        unsigned starts = 1;
        unsigned reheats = 0;
        double firstPhase = 0.0;   // when the cooling that teaches ends; 0 if there is none
        double startsPhase = 1.0;  // when all coolings from starts end
        // How long layouts may be where the others begin, in final lengths of the first cooling:
        // from starts, and reheated.
        double startLength = 2.0;
        double reheatedLength = 1.3;
        double coldest = 1e-3;
        Span span{0.0, 0.0, 1.0};  // until learnt
    };
    static Shape shapeOf(Kind kind);
    bool teaches(unsigned cooling) const { return cooling == 0 && shape.firstPhase > 0.0; }
    bool isLonger(unsigned step, double times) const;
    double lastBefore(double times) const;

    static constexpr unsigned kSteps = 20;

    Shape shape;
    std::array<double, kSteps> lengths{};  // sums of those noted, by step of the first cooling
    std::array<double, kSteps> notes{};    // how many they are
};

}  // namespace korvel
