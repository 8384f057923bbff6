#include "anneal/MoveProbabilities.h"

#include <cmath>
#include <numeric>
#include <utility>

namespace korvel {

namespace {

// Moves; enough of each kind for a mean.
constexpr unsigned kAdaptEvery = 2000;
// So that a kind's quality is still seen when it has become worth trying again.
constexpr double kLeastProbability = 0.02;
// Of the way to what the last moves say, and what these count the next time: qualities scatter, but
// change with the temperature.
constexpr double kAdapted = 0.5;
constexpr double kRemembered = 0.5;

}  // namespace

MoveProbabilities::MoveProbabilities(std::vector<double> initial) : initial(std::move(initial)) {
    const double sum = std::accumulate(this->initial.begin(), this->initial.end(), 0.0);
    for (double& probability : this->initial) {
        probability /= sum;
    }
    restart();
}

void MoveProbabilities::restart() {
    probabilities = initial;
    tries.assign(initial.size(), 0.0);
    rewards.assign(initial.size(), 0.0);
    sinceAdapted = 0;
}

unsigned MoveProbabilities::draw(RandomStream& random) {
    if (++sinceAdapted == kAdaptEvery) {
        sinceAdapted = 0;
        adapt();
    }
    double left = random.uniform();
    for (unsigned kind = 0; kind < probabilities.size(); ++kind) {
        if (probabilities[kind] > 0.0) {
            last = kind;
            if (left < probabilities[kind]) {
                break;
            }
            left -= probabilities[kind];
        }
    }
    tries[last] += 1.0;
    return last;
}

void MoveProbabilities::reward(double difference) {
    rewards[last] += std::abs(difference);
}

void MoveProbabilities::adapt() {
    double all = 0.0;
    double possible = 0.0;  // kinds
    for (unsigned kind = 0; kind < probabilities.size(); ++kind) {
        all += quality(kind);
        possible += initial[kind] > 0.0 ? 1.0 : 0.0;
    }
    for (unsigned kind = 0; kind < probabilities.size() && all > 0.0; ++kind) {
        if (initial[kind] > 0.0) {
            const double wanted =
                kLeastProbability + (1.0 - possible * kLeastProbability) * quality(kind) / all;
            probabilities[kind] += kAdapted * (wanted - probabilities[kind]);
        }
    }
    for (unsigned kind = 0; kind < probabilities.size(); ++kind) {
        tries[kind] *= kRemembered;
        rewards[kind] *= kRemembered;
    }
}

double MoveProbabilities::quality(unsigned kind) const {
    return tries[kind] > 0.0 ? std::sqrt(rewards[kind] / tries[kind]) : 0.0;
}

}  // namespace korvel
