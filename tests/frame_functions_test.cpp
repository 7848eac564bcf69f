// The list of functions as read, and what the reader and gen_frame say to bad input.
#include <gtest/gtest.h>

#include <map>

#include "generator/check.h"
#include "generator/functions.h"
#include "generator/table.h"
#include "tests/plans_folder.h"

namespace {

using xfm::Function;
using xfm::FunctionKind;
using xfm::FunctionList;
using xfm::Gate;
namespace fs = std::filesystem;
using Folder = xfm::test::PlansFolder;
using xfm::test::read_text;

const FunctionList& whole_list() {
  static const FunctionList list = FunctionList::read(XFM_FUNCTIONS);
  return list;
}

TEST(Functions, NumbersOfATableAreNumbersToTheirEnd) {
  const Folder folder;
  std::ofstream(folder / "t.tsv") << "n\tm\n12\t12abc\n-7\t 7\n0\t\n1\t99999999999\n2\t+3\n";
  const xfm::Table table = xfm::Table::read(folder / "t.tsv", {"n", "m"});
  EXPECT_EQ(table.rows().size(), 5u);
  EXPECT_THROW((void)xfm::Table::read(folder / "t.tsv", {"n", "k"}), xfm::InputError);
  for (const xfm::TableRow& row : table.rows()) {
    EXPECT_EQ(std::to_string(row.integer("n")), row["n"]);
    EXPECT_THROW((void)row.integer("m"), xfm::InputError) << row["m"];
  }
}

TEST(Functions, TheWholeListHas1193Names) {
  std::map<std::string, int> kernels, others;
  for (const Function& function : whole_list().functions())
    ++(function.kind == FunctionKind::Kernel ? kernels : others)[function.part];
  EXPECT_EQ(whole_list().functions().size(), 1193u);
  EXPECT_EQ(kernels["dft"] + kernels["rdft"], 1134);
  EXPECT_EQ(kernels["wht"], 26);
  EXPECT_EQ(others["dft"] + others["rdft"], 18);
  EXPECT_EQ(others["wht"], 4);
  EXPECT_EQ(others["dct4"], 10);
  EXPECT_EQ(others["frame"], 1);
}

// The alignment classes, put as rules instead of lists.
Gate expected_gate(const Function& kernel) {
  const int n = kernel.size;
  if (kernel.part == "rdft") return Gate::Plain;
  if (kernel.part == "wht") {
    const int inline_order = kernel.type == "32f" ? 4 : 3;  // the first order with vectors
    return n < inline_order ? Gate::Plain : n == inline_order ? Gate::Gate16Inline : Gate::Gate16Twin;
  }
  if (kernel.type == "32fc") return n <= 5 ? Gate::Plain : n % 16 == 0 ? Gate::Gate32Inline : Gate::Gate16Twin;
  if (n <= 4) return Gate::Gate16Inline;
  if (n % 4 != 0) return Gate::Gate16Twin;
  return n <= 16 || n == 32 ? Gate::Gate32Inline : Gate::Plain;
}

TEST(Functions, EveryKernelHasItsAlignmentClass) {
  for (const Function& function : whole_list().functions()) {
    if (function.kind != FunctionKind::Kernel) continue;
    EXPECT_EQ(to_string(function.gate), to_string(expected_gate(function))) << function.name;
  }
}

TEST(Functions, DeclarationsAndTwins) {
  EXPECT_EQ(whole_list().find("xfmgDFTFwd_CToC_15_64fc")->declaration(),
            "XfmStatus xfmgDFTFwd_CToC_15_64fc(const Xfm64fc* src, Xfm64fc* dst, int flag)");
  EXPECT_EQ(whole_list().find("xfmgWHT_32f")->declaration(),
            "XfmStatus xfmgWHT_32f(const Xfm32f* src, Xfm32f* dst, int order, int flag, void* buffer)");
  EXPECT_EQ(whole_list().find("xfmgenGetLibVersion")->declaration(), "const XfmLibraryVersion* xfmgenGetLibVersion(void)");
  EXPECT_EQ(whole_list().find("xfmgWHT_5_32f")->twin_name(), "owngWHT_5_32f_unaligned");
  EXPECT_EQ(whole_list().find("xfmgWHT_14_32f"), nullptr);
}

TEST(Functions, ABuildMayHaveSomeOfThem) {
  const FunctionList some = whole_list().restricted_to({"frame", "xfmgDFTInv_CToC", "xfmgHartley_32f"});
  EXPECT_EQ(some.functions().size(), 1u + 2 * 64 + 64);
  EXPECT_THROW((void)whole_list().restricted_to({"dtf"}), xfm::InputError);
}

struct BadList {
  const char* row;      // replaces the list's only row
  const char* message;  // part of what is said
};

constexpr const char* kColumns = "part\tname\ttype\treturns\targuments\tindex\tsizes\tscale\tclasses\tdoc\n";
const BadList kBadLists[] = {
    {"dft\txfmgF\t32fc\tXfmStatus\tint flag\tlen\t2-4\tforward\tPlain 2-3\tText.", "a size has no class"},
    {"dft\txfmgF\t32fc\tXfmStatus\tint flag\tlen\t2-4\tforward\tPlain 2-5\tText.", "size 5 out of range"},
    {"dft\txfmgF\t32fc\tXfmStatus\tint flag\tlen\t2-4\tforward\tPlain 2; Gate16Twin 2-4\tText.", "two classes for size 2"},
    {"dft\txfmgF\t32fc\tXfmStatus\tint flag\tlen\t2-4\tforward\tPlane rest\tText.", "is not a class"},
    {"dft\txfmgF\t32fc\tXfmStatus\tint flag\tlen\t4-2\tforward\tPlain rest\tText.", "is not a range"},
    {"dft\txfmgF\t32fc\tXfmStatus\tint flag\tlen\t2-x\tforward\tPlain rest\tText.", "is not a range"},
    {"dft\txfmgF\t32q\tXfmStatus\tint flag\tlen\t2-4\tforward\tPlain rest\tText.", "is not an element type"},
    {"dft\txfmgF\t32fc\tXfmStatus\tint flag\tlen\t2-4\tsideways\tPlain rest\tText.", "is not a scale rule"},
    {"dft\txfmgF\t32fc\tXfmStatus\tvoid\tlen\t2-4\tforward\tPlain rest\tText.", "int flag"},
    {"dft\txfmgF\t32fc\tXfmStatus\tint flag\tlength\t2-4\tforward\tPlain rest\tText.", "neither len nor order"},
    {"dft\txfmgF\t32fc\tXfmStatus\tint flag\tlen\t2-4\tforward\tPlain rest\tText.\n"
     "dft\txfmgF\t32fc\tXfmStatus\tint flag\tlen\t6-7\tforward\tPlain rest\tText.", "do not continue"},
    {"dft\txfmgF\t32fc\tXfmStatus\tvoid\t-\t-\t-\t-\tText.\ndft\txfmgF\t32fc\tXfmStatus\tvoid\t-\t-\t-\t-\tText.",
     "listed twice"},
    {"dft\txfmgF\t32fc\tXfmStatus\tint flag\tlen\t02-4\tforward\tPlain rest\tText.", "is not a range"},
    {"dft\txfmgF\t32fc\tXfmStatus\tint flags\tlen\t2-4\tforward\tPlain rest\tText.", "int flag"},
    {"dft\txfmgF\t32fc\t\tint flag\tlen\t2-4\tforward\tPlain rest\tText.", "an empty cell"},
    {"dft\tF\t32fc\tXfmStatus\tint flag\tlen\t2-4\tforward\tPlain rest\tText.", "does not begin with xfmg"},
    {"dft\txfmgF\t32fc", "3 cells"},
    {"", "no rows"},
};

TEST(Functions, ABadRowIsReportedWithFileAndLine) {
  const Folder folder;
  for (const BadList& bad : kBadLists) {
    const fs::path path = folder / "bad.tsv";
    std::ofstream(path) << "# a comment\n" << kColumns << bad.row << "\n";
    try {
      (void)FunctionList::read(path);
      ADD_FAILURE() << "accepted: " << bad.row;
    } catch (const xfm::InputError& error) {
      const std::string message = error.what();
      EXPECT_NE(message.find(bad.message), std::string::npos) << message;
      const bool is_second = std::string(bad.row).find('\n') != std::string::npos;
      const std::string place = *bad.row == '\0' ? path.string() + ": " : path.string() + (is_second ? ":4: " : ":3: ");
      EXPECT_TRUE(message.starts_with(place)) << message;
    }
  }
  EXPECT_THROW((void)FunctionList::read(folder / "absent.tsv"), xfm::InputError);
}

int run_gen_frame(const std::string& arguments, const fs::path& errors) {
  return std::system((std::string(XFM_GEN_FRAME) + " " + arguments + " 2>" + errors.string()).c_str());
}

TEST(GenFrame, BadInputLeavesNoFile) {
  const Folder folder;
  const fs::path output = folder / "out", errors = folder / "errors", header = folder / "header.in";
  const std::string list = XFM_FUNCTIONS;
  std::ofstream(header) << "@family xfmgHartley\n@family xfmgHartly\n";
  std::ofstream(folder / "bad.tsv") << kColumns << "dft\tf\n";
  const std::pair<std::string, const char*> cases[] = {
      {"dispatchers " + (folder / "bad.tsv").string() + " frame", ":2: 2 cells"},
      {"map " + list + " frame,unknown", "\"unknown\""},
      {"header " + list + " frame " + header.string(), ":2: no family, or one placed before: xfmgHartly"},
      {"header " + list + " frame /dev/null", "no place for the family"},
      {"poem " + list + " frame", "\"poem\""},
      {"map " + list, "usage"},
  };
  for (const auto& [arguments, message] : cases) {
    EXPECT_NE(run_gen_frame(arguments + " " + output.string(), errors), 0) << arguments;
    EXPECT_NE(read_text(errors).find(message), std::string::npos) << read_text(errors);
    EXPECT_FALSE(fs::exists(output)) << arguments;
  }
  EXPECT_NE(run_gen_frame("map " + list + " frame " + (folder / "no/folder").string(), errors), 0);
}

TEST(GenFrame, TheSameListGivesTheSameBytes) {
  const Folder folder;
  const std::string all = std::string(XFM_FUNCTIONS) + " frame,dft,rdft,wht,dct4 ";
  for (const std::string what : {"header", "dispatchers", "map", "list"}) {
    const std::string arguments = what + " " + all + (what == "header" ? std::string(XFM_HEADER_TEMPLATE) + " " : "");
    ASSERT_EQ(run_gen_frame(arguments + (folder / "one").string(), "/dev/null"), 0) << what;
    ASSERT_EQ(run_gen_frame(arguments + (folder / "two").string(), "/dev/null"), 0) << what;
    EXPECT_EQ(read_text(folder / "one"), read_text(folder / "two")) << what;
    EXPECT_NE(read_text(folder / "one").find("do not edit"), std::string::npos) << what;
  }
}

}  // namespace
