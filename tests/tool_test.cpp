// The tool: what it says, what it writes, and that bad input costs one line and no file.
#include <nlohmann/json.hpp>

#include <vector>

#include "tests/programs.h"
#include "xfm.h"

namespace {

using namespace xfm::test;

class Tool : public ProgramTest {};

TEST_F(Tool, InfoNamesTheLibraryInUse) {
  const Ended ended = run("env -u GLIBC_TUNABLES " XFM_TOOL " info");
  EXPECT_EQ(ended.status, 0) << ended.errors;
  for (const std::string& expected : {std::string(xfmgenGetLibVersion()->version), std::string("Functions   1193"), std::string(XFM_LIBRARY_FOLDER), std::string("GLIBC_TUNABLES is not set")})
    EXPECT_NE(ended.out.find(expected), std::string::npos) << ended.out;
  EXPECT_NE(run("GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX512F,-AVX2 " XFM_TOOL " info").out.find("\nIn use      base: "), std::string::npos);
}

// Where a copy for newer processors stands, the loader takes it and the tool says so; the tunables take it away.
TEST_F(Tool, InfoTellsWhichCopyTheLoaderTook) {
  if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma")) GTEST_SKIP() << "this processor is below x86-64-v3";
  run("mkdir -p glibc-hwcaps/x86-64-v3; cp " XFM_LIBRARY_FOLDER "/libxfm*.so.6.1 .; cp " XFM_LIBRARY_FOLDER "/libxfmgene9.so.6.1 glibc-hwcaps/x86-64-v3");
  const std::string info = "LD_LIBRARY_PATH=$PWD " XFM_TOOL " info";
  const Ended newer = run("env -u GLIBC_TUNABLES " + info), base = run("GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX512F,-AVX2 " + info);
  EXPECT_NE(newer.out.find("In use      x86-64-v3: " + path("glibc-hwcaps")), std::string::npos) << newer.out << newer.errors;
  EXPECT_NE(base.out.find("In use      base: " + path("lib")), std::string::npos) << base.out << base.errors;
  EXPECT_NE(base.out.find("GLIBC_TUNABLES hides the rest"), std::string::npos) << base.out;
}

TEST_F(Tool, TestFindsTheLibraryRightAndAFaultyOneWrong) {
  const Ended right = run(XFM_TOOL " test");
  EXPECT_EQ(right.status, 0) << right.out << right.errors;
  EXPECT_NE(right.out.find("All 1193 functions"), std::string::npos) << right.out;
  const Ended wrong = run("LD_PRELOAD=" XFM_FAULTY_KERNELS " " XFM_TOOL " test");
  EXPECT_EQ(wrong.status, 1);
  for (const char* fault : {"xfmgHartley_8_32f: off its formula", "xfmgDFTFwd_CToC_5_64fc: takes a null source", "xfmgDCT4Free_64f: fails"})
    EXPECT_NE(wrong.out.find(fault), std::string::npos) << fault << wrong.out;
  EXPECT_TRUE(wrong.one_line_of_error()) << wrong.errors;
}

TEST_F(Tool, BenchWritesWhatItPrints) {
  for (const auto& [family, sizes, rows] : {std::tuple{"complex", "2-4,64", 16u}, {"real", "8", 4u}, {"hartley", "3,5", 4u}, {"wht", "1-2,8", 6u}, {"dct4", "1,7", 4u}}) {
    const std::string arguments = std::string(" bench ") + family + " --sizes " + sizes + " --rounds 1 --us 1 --rivals measure";
    const Ended ended = run(XFM_TOOL + arguments + " --json a.json --tsv a.tsv --plot a.svg");
    ASSERT_EQ(ended.status, 0) << family << ended.errors;
    const auto document = nlohmann::json::parse(contents(path("a.json")));
    const auto& report = document.at("reports").at(0);
    EXPECT_EQ(report.at("benchmark"), family);
    EXPECT_EQ(report.at("rows").size(), rows) << family;
    for (const auto& row : report.at("rows")) EXPECT_GT(row.at(2).get<double>(), 0) << row;
    const std::string tsv = contents(path("a.tsv"));
    EXPECT_TRUE(tsv.starts_with("function\tN\t")) << tsv;
    for (const auto& row : report.at("rows")) {
      const std::string start = row.at(0).get<std::string>() + "\t" + std::to_string(row.at(1).get<int>()) + "\t";
      const size_t at = tsv.find(start);
      ASSERT_NE(at, std::string::npos) << row;
      EXPECT_NEAR(std::stod(tsv.substr(at + start.size())) / row.at(2).get<double>(), 1, 0.1) << row;
    }
    EXPECT_EQ(run(XFM_TOOL " bench --from a.json --plot b.svg").status, 0);
    for (const char* plot : {"a.svg", "b.svg"}) EXPECT_NE(contents(path(plot)).find("</svg>"), std::string::npos) << family;
  }
  const char* const again = "chmod 640 a.tsv && " XFM_TOOL " bench wht --sizes 1 --rounds 1 --us 1 --rivals none --tsv a.tsv >/dev/null && stat -c %a a.tsv";
  EXPECT_EQ(run(again).out, "640\n") << "the rights of the file that was there";
}

TEST_F(Tool, ResultsOfSoundHaveNamesOfTheirOwn) {
  run("cp /usr/share/sounds/alsa/Front_Center.wav voice.wav 2>/dev/null || true");
  if (!fs::exists(path("voice.wav"))) GTEST_SKIP() << "the package alsa-utils is not installed";
  for (const char* command : {"spectrum", "compress"}) {
    const std::string line = std::string(XFM_TOOL " ") + command + " voice.wav";
    EXPECT_EQ(run(line).status, 0) << command;
    const Ended again = run(line);
    EXPECT_EQ(again.status, 1);
    EXPECT_NE(again.errors.find("exists already"), std::string::npos) << again.errors;
    EXPECT_EQ(run(line + " --force").status, 0) << command;
    EXPECT_NE(run(line + " -o voice.wav").errors.find("is the recording itself"), std::string::npos);
  }
  EXPECT_TRUE(fs::exists(path("voice.png")) && fs::exists(path("voice-compressed.wav")));
  EXPECT_EQ(run(XFM_TOOL " spectrum - -o voice.svg <voice.wav").status, 0);
  EXPECT_EQ(run("ln -s voice.png link.png; " XFM_TOOL " spectrum voice.wav -o link.png && test -L link.png").status, 0);
  EXPECT_EQ(run(XFM_TOOL " compress voice.wav -o /dev/stdout 2>/dev/null | head -c 4").out, "RIFF");
}

TEST_F(Tool, BadInputIsOneLineThatNamesIt) {
  write("kept.json", "as it was");
  write("table.tsv", "no json");
  const std::pair<const char*, const char*> cases[] = {
      {"", "subcommand"},
      {"--colour", "--colour"},
      {"dance", "dance"},
      {"info now", "now"},
      {"bench --sizes 3", "--sizes"},
      {"bench complex --sizes 65 --json kept.json", "--sizes: 65"},
      {"bench complex --sizes 4- --json kept.json", "4-"},
      {"bench complex --sizes 9-4", "9-4"},
      {"bench complex --rounds many", "--rounds"},
      {"bench complex --rounds 0", "--rounds"},
      {"bench complex --us -1", "--us"},
      {"bench complex --rivals both", "--rivals"},
      {"bench complex --only '['", "--only"},
      {"bench complex --only Hartley --json kept.json", "--only Hartley"},
      {"bench complex --against absent.so", "absent.so"},
      {"bench complex --against table.tsv --json kept.json", "table.tsv"},
      {"bench complex --offset x", "--offset"},
      {"bench wht --align 48", "--align: 48"},
      {"bench wht --offset 4", "--offset"},
      {"bench complex --json absent/a.json", "absent/a.json: cannot be written"},
      {"bench complex --plot a.pdf", "a.pdf"},
      {"bench --from table.tsv --plot a.svg", "table.tsv: holds no results"},
      {"bench --from absent.json --plot a.svg", "absent.json: cannot be opened"},
      {"spectrum", "FILE"},
      {"spectrum absent.wav", "absent.wav: cannot be opened"},
      {"spectrum table.tsv -o a.jpg", "a.jpg"},
      {"compress table.tsv", "table.tsv: cannot be read as sound"},
      {"compress $'two\\nlines.wav'", "two lines.wav: cannot be opened"},
      {"compress --keep 101 table.tsv", "--keep"},
      {"compress --keep half table.tsv", "--keep"},
  };
  for (const auto& [arguments, named] : cases) {
    const Ended ended = run(std::string(XFM_TOOL " ") + arguments);
    EXPECT_TRUE(ended.status == 1 || ended.status == 2) << arguments << ' ' << ended.status;
    EXPECT_TRUE(ended.one_line_of_error()) << arguments << '\n' << ended.errors;
    EXPECT_NE(ended.errors.find(named), std::string::npos) << arguments << '\n' << ended.errors;
    EXPECT_EQ(files(), 2u) << arguments;
  }
  EXPECT_TRUE(contents(path("kept.json")) == "as it was");
  for (const char* command : {"--help", "info --help", "test --help", "bench --help", "bench wht --help", "spectrum --help", "compress --help"})
    EXPECT_EQ(run(std::string(XFM_TOOL " ") + command).status, 0) << command;
  EXPECT_NE(run(XFM_TOOL " info >/dev/full").errors.find("standard output cannot be written"), std::string::npos);
}

}  // namespace
