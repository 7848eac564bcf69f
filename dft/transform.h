// The whole transform of one size as a graph on lanes: vectors of `lanes` complex values, each lane a point of the data.
//
// A link runs B blocks of length A, then A blocks of length B. Blocks of a stage are taken several to a vector, one a
// lane; between stages points are regrouped. With one lane this is the plain graph, from which the counts are taken.
#pragma once

#include <string>
#include <vector>

#include "dft/blocks.h"
#include "generator/graph.h"

namespace xfm::dft {

// What stands between the stages of a plan: complex bins; or, where it saves rotations, half spectra of the real and of the
// imaginary parts, in those of its blocks that are plans themselves or throughout.
enum class Flow { Complex, HalfBlocks, Half };

struct ComplexPlan {
  Plan plan;
  Flow flow = Flow::Complex;
};

// How the blocks of a stage are put on lanes.
enum class Placement {
  Nested,     // a vector holds the same point of several blocks and keeps to them through all their inner stages
  Flattened,  // every stage fills vectors with all its blocks, whichever outer block they belong to; not for half spectra
};

struct LanedTransform {
  Graph graph{1};
  std::vector<Point> outputs;  // bin k of the transform
};

LanedTransform laned_transform(const ComplexPlan& plan, int sign, int lanes, Placement placement);

}  // namespace xfm::dft
