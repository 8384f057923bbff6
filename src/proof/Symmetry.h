// What can be exchanged or turned in a design without changing any length, so that of several
// placements that are images of one another only one is looked for.
//
// A symmetry gives every die an image, another die or itself, which looks the same after some
// quarter turns: same extents, same costs of all nets. Without nets to terminals, turning the
// whole by 180 degrees is one as well, in a square region also by 90. Mirroring is none: dies are
// not mirrored, and a mirrored arrangement of unmirrored dies has other lengths.
//
// Of all images of a placement the one is looked for whose turns, read in the order of the dies,
// come first, and among those with the same turns the one whose x coordinates do. Whatever that one
// must fulfil for one symmetry holds whether or not other symmetries are known, so an incomplete
// list of them loses nothing but time. Lengths that differ by rounding count as the same.
//
// Filled once; any thread may read. Refers to the model.
#pragma once

#include <array>
#include <vector>

#include "proof/ProofModel.h"
#include "proof/ProofNode.h"

namespace korvel {

class Symmetry {
public:
    // The order in which dies get their turns.
    Symmetry(const ProofModel& model, const std::vector<unsigned>& order);

    // The turns of a die that do not all look like an earlier one.
    const std::vector<unsigned>& turnsOf(unsigned die) const { return turns[die]; }

    // False if the node's turns show that some image of its placements comes first.
    bool mayBeFirst(const ProofNode& node) const;
    // Takes away relations that an image has the other way round. The node's dies have to be turned
    // in the order.
    void narrow(ProofNode& node) const;

    std::size_t getImageNum() const { return images.size(); }

private:
    struct Image {
        std::array<std::uint8_t, kMaxProofDies> from;    // by die: which one comes to lie here
        std::array<std::uint8_t, kMaxProofDies> turned;  // by die: by how much that one is turned
        bool keepsPlaces;                                // the whole is not turned
    };
    enum class Rank { Later, Same, Earlier, Open };

    Rank rank(const Image& image, const ProofNode& node) const;
    bool looksAlike(unsigned die, unsigned turn, unsigned other, unsigned otherTurn) const;
    void findTurns();
    void findImages(Image& image, std::size_t placed);
    bool agrees(const Image& image, std::size_t placed) const;
    bool keepsBundle(const Image& image, unsigned a, unsigned b) const;
    bool keepsWideNets(const Image& image) const;
    void addWholeTurns();

    const ProofModel& model;
    std::vector<unsigned> order;
    double nearness;
    unsigned trials = 0;
    std::vector<std::vector<unsigned>> turns;
    std::vector<std::array<std::uint8_t, kUnmirroredOrients>>
        standsFor;  // by die and turn: the first alike
    std::vector<Image> images;
};

}  // namespace korvel
