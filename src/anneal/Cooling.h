// The schedule of a run of the annealer: how hot it is when, and where it begins anew. Random
// starts are cooled down in the first part of a run; then the best layout of them is heated up
// again, not as far, and cooled down, more than once. Where layouts settle differs between designs.
// So the first start is a quick one from hot to cold that shows it, and the stages after it spend
// their time where something happens. A value, for one thread.
#pragma once

#include <array>

namespace korvel {

class Cooling {
public:
    // Single: cools down one start, and does not heat up again. FewDies: starts alike; they stay
    // warmer, because exact coordinates do for few dies what the coldest moves would, and there
    // they can still leave the layout at hand. Coarse: many starts, quickly. Expanded: as usual,
    // for starts that are good on the whole and are not to be lost in the heat.
    enum class Plan : unsigned char { Usual, Single, FewDies, Coarse, Expanded };

    explicit Cooling(Plan plan);

    struct Stage {
        unsigned number;
        double part;  // of it that is over
    };
    // At a share of the run, from 0 to below 1.
    Stage stageAt(double share) const;
    bool isStart(unsigned stage) const { return stage < shape.starts; }
    // In parts of what random changes make of random layouts.
    double heat(Stage stage) const;

    // What the length is by now.
    void note(Stage stage, double length);
    // When the first start is over: what was noted in it tells where the others begin and end, and
    // how many there are to be.
    void learn();

private:
    // The way from hot to cold, on a logarithmic scale from 0 to 1.
    struct Way {
        double begin, reheated, end;
    };
    struct Shape {
        unsigned starts = 1;
        unsigned reheats = 0;
        double firstPart = 0.0;   // of the run, for the first start if it is to teach; else 0
        double startsPart = 1.0;  // for all starts
        // Where others begin, and are heated up to, in lengths that the first start ends with.
        double startLength = 2.0;  // longer layouts are disorder, which cools down quickly
        double reheatedLength = 1.3;
        double endHeat = 1e-3;
        Way way{0.0, 0.0, 1.0};  // until learnt
    };
    static Shape shapeOf(Plan plan);
    bool isToTeach(unsigned stage) const { return stage == 0 && shape.firstPart > 0.0; }

    static constexpr unsigned kSteps = 20;

    Shape shape;
    std::array<double, kSteps> lengths{}, notes{};  // sums and numbers, by step of the way
};

}  // namespace korvel
