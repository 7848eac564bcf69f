// The plan tables of the real families, each row read into the flow of its kernels. A row states what its flow costs; a
// flow that departs from its row in any column is bad input.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "rdft/counts.h"
#include "rdft/flow.h"

namespace xfm::rdft {

struct Row {
  int length;
  std::string plan;  // as the table has it
  Flow flow;
  FlowCounts counts;
};

// The file of plans/ that a family is made from.
std::string table_name(Family family);

// A row for each length that functions.tsv has, in order. Reads the tables in the directory.
std::vector<Row> read_rows(const std::filesystem::path& plans, Family family);

}  // namespace xfm::rdft
