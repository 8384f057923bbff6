#include "anneal/MoveShares.h"

#include <cmath>
#include <numeric>
#include <utility>

namespace korvel {

namespace {

constexpr unsigned kAdaptEvery = 2000;
constexpr double kLeastShare = 0.02;
constexpr double kAdapted = 0.5;  // how much of the way the shares go
constexpr double kRemembered = 0.5;

}  // namespace

MoveShares::MoveShares(std::vector<double> initial) : initial(std::move(initial)) {
    const double sum = std::accumulate(this->initial.begin(), this->initial.end(), 0.0);
    for (double& share : this->initial) {
        share /= sum;
    }
    restart();
}

void MoveShares::restart() {
    shares = initial;
    tries.assign(initial.size(), 0.0);
    rewards.assign(initial.size(), 0.0);
    sinceAdapted = 0;
}

unsigned MoveShares::draw(RandomStream& random) {
    if (++sinceAdapted == kAdaptEvery) {
        sinceAdapted = 0;
        adapt();
    }
    double left = random.fraction();
    for (unsigned kind = 0; kind < shares.size(); ++kind) {
        if (shares[kind] > 0.0) {
            last = kind;
            if (left < shares[kind]) {
                break;
            }
            left -= shares[kind];
        }
    }
    tries[last] += 1.0;
    return last;
}

void MoveShares::reward(double difference) {
    rewards[last] += std::abs(difference);
}

void MoveShares::adapt() {
    double all = 0.0;
    double possible = 0.0;  // kinds
    for (unsigned kind = 0; kind < shares.size(); ++kind) {
        all += worth(kind);
        possible += initial[kind] > 0.0 ? 1.0 : 0.0;
    }
    for (unsigned kind = 0; kind < shares.size() && all > 0.0; ++kind) {
        if (initial[kind] > 0.0) {
            const double wanted = kLeastShare + (1.0 - possible * kLeastShare) * worth(kind) / all;
            shares[kind] += kAdapted * (wanted - shares[kind]);
        }
    }
    for (unsigned kind = 0; kind < shares.size(); ++kind) {
        tries[kind] *= kRemembered;
        rewards[kind] *= kRemembered;
    }
}

double MoveShares::worth(unsigned kind) const {
    return tries[kind] > 0.0 ? std::sqrt(rewards[kind] / tries[kind]) : 0.0;
}

}  // namespace korvel
