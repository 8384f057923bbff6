// The tolerances of the rooms that reckon in double precision, each with the reason for its size.
// Doubles hold 16 digits; sums of the thousands of lengths of a design keep about 12 of them.
#pragma once

namespace korvel {

// --- Parts of a side of the region -----------------------------------------------------------

// Dies that overlap or leave the region by this part of its larger side count as touching: what
// rounding needs, for coordinates that never left the program. It is the standard of every
// placement that the program reports.
inline constexpr double kTouching = 1e-9;

// The same for coordinates from a file, which other tools write with few digits. In a region of
// 40 mm this is 40 nm.
inline constexpr double kTouchingInFiles = 1e-6;

// Dies whose lengths add up to this part more than the region's side still fit into it, because
// sums of decimal fractions are not exact. The same everywhere: a placement that one engine accepts
// must not be ruled out by the bounds of another.
inline constexpr double kFitting = 1e-9;

// Within this part positions count as the same in a proof: well above the rounding error of a
// position, and so small that the error of the bound that it causes is far below kProved.
inline constexpr double kNearPosition = 1e-11;

// Two dies at a distance within this part of one where they touch, or where a net has a breakpoint,
// are taken to be meant there: more than the flow's whole numbers round by, less than kTouching.
inline constexpr double kMeantPosition = 1e-10;

// A die that slides need not come closer to its best position: there are millions of slides, and
// exact coordinates follow.
inline constexpr double kSlidingEnough = 1e-7;

// --- Parts of a length -----------------------------------------------------------------------

// The bound that a proof takes from least costs is lowered by this part, which is far more than the
// rounding error of its sum and far less than kProved.
inline constexpr double kBoundError = 1e-11;

// More than the rounding error of any sum of lengths of nets.
inline constexpr double kSumError = 1e-12;

// A placement counts as the shortest if no other is shorter by more than this part.
inline constexpr double kProved = 1e-6;

// More than the relative error of a length in single precision, which has 7 digits.
inline constexpr double kFloatError = 1e-6;

// Tools print sizes with six digits or more.
inline constexpr double kPrintedSize = 1e-5;

}  // namespace korvel
