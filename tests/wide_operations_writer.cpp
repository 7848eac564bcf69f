// Writes the unit of the programs in wide_operations.h: wide_operations_writer UNIT.cpp
#include "generator/output.h"
#include "generator/program.h"
#include "generator/schedule.h"
#include "generator/text.h"
#include "tests/wide_operations.h"

namespace {

void write(int argc, char** argv) {
  if (argc != 2) throw xfm::InputError("usage: wide_operations_writer UNIT.cpp");
  std::string text = "#include \"generator/kernel_support.h\"\n", table;
  int number = 0;
  for (const wide_operations::Case& c : wide_operations::cases()) {
    const std::string name = "case_" + std::to_string(number++), real = c.single ? "float" : "double";
    if (!c.program.pool().empty()) text += xfm::pool_text(c.program, name, c.single, {}, 1);
    text += "static void " + name + "(const void* source, void* target) {\n  [[maybe_unused]] const auto* x = static_cast<const " + real +
            "*>(source);\n  auto* y = static_cast<" + real + "*>(target);\n";
    xfm::BodyNames names;
    names.pool = "owngPool_" + name;
    names.access = "Unaligned";
    for (const std::string& line : body_text(xfm::scheduled(c.program), names)) text += "  " + line + "\n";
    text += "}\n";
    table += name + ", ";
  }
  text += "extern void (*const kWideOperations[])(const void*, void*) = {" + table + "};\n";
  xfm::write_file(argv[1], text);
}

}  // namespace

int main(int argc, char** argv) { return xfm::run_program(argc, argv, write); }
