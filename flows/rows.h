// What the rows of all plan tables have in common: plans as cells and named blocks.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "flows/plan.h"
#include "generator/check.h"
#include "generator/table.h"

namespace xfm {

// Runs `read`; bad input that it finds is reported in this row.
template <class Read>
auto in_row(const TableRow& row, Read read) {
  try {
    return read();
  } catch (const InputError& error) {
    row.fail(error.what());
  }
}

// The plan in a cell, of the length that is asked for; 0 stands for any.
Plan plan_in(const TableRow& row, std::string_view column, int length, const PlanBlocks& blocks = {});
// Whether a block of a plan has a form: a butterfly of up to so many points, or an odd prime.
void check_blocks(const TableRow& row, const Plan& plan, int largest_butterfly);

// The blocks of a table of names and plans, each of which may use those above it. A name is a capital letter and the length,
// then small letters or nothing. In a table for several precisions a block may also stand for the prime of its length in one:
// for that precision it has the prime as a second name.
PlanBlocks read_blocks(const std::filesystem::path& file, int largest_butterfly, std::optional<int> precision = {});

}  // namespace xfm
