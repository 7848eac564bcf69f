// Every faulty sample must give exactly the findings written at its head, the sound one none; and every rule must be
// seen to speak by some sample.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "counts.h"

namespace {

using namespace xfm::audit;
namespace fs = std::filesystem;
using Spoken = std::pair<std::string, std::string>;  // rule, where

// A finding that is due, and what its detail says where the sample tells it.
struct Due {
  Spoken spoken;
  std::string detail;
};

struct Sample {
  std::string name;
  std::vector<Due> findings;  // each at least once
  std::vector<std::string> counts;
  Expected expected;
  std::string target = "base";
  bool exports_given = false;
};

void PrintTo(const Sample& sample, std::ostream* out) { *out << sample.name << ".S"; }

std::vector<std::string> words(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> out;
  for (std::string word; in >> word;) out.push_back(word);
  return out;
}

Sample read_sample(const fs::path& source) {
  Sample sample{.name = source.stem().string(), .findings = {}, .counts = {}, .expected = {}};
  sample.expected.soname = "libsample.so";
  std::ifstream in(source);
  for (std::string line; std::getline(in, line) && line != "*/";) {
    const auto parts = words(line);
    if (parts.size() < 2) continue;
    const std::set<std::string> values(parts.begin() + 1, parts.end());
    if (parts[0] == "expects:") {
      std::string detail;
      for (std::size_t i = 3; i < parts.size(); ++i) detail += (detail.empty() ? "" : " ") + parts[i];
      sample.findings.push_back({{parts.at(1), parts.at(2)}, detail});
    }
    if (parts[0] == "target:") sample.target = parts[1];
    if (parts[0] == "needed:") sample.expected.needed = values;
    if (parts[0] == "imports:") sample.expected.imports = values;
    if (parts[0] == "counts:") sample.counts.assign(parts.begin() + 1, parts.end());
    if (parts[0] != "exports:") continue;
    sample.expected.exports = values;
    sample.exports_given = true;
  }
  return sample;
}

std::vector<Sample> all_samples() {
  std::vector<Sample> samples;
  for (const auto& entry : fs::directory_iterator(XFM_AUDIT_SAMPLE_SOURCES))
    if (entry.path().extension() == ".S") samples.push_back(read_sample(entry.path()));
  std::ranges::sort(samples, {}, &Sample::name);
  return samples;
}

// A sample that says nothing of its exports exports what it should.
void take_exports(const ElfImage& image, Sample& sample) {
  if (sample.exports_given) return;
  for (const auto& symbol : image.dynamic_symbols())
    if (symbol.section != SHN_UNDEF && symbol.binding != STB_LOCAL) sample.expected.exports.insert(symbol.name);
}

class AuditSample : public testing::TestWithParam<Sample> {};

Findings findings_in(Sample sample, std::size_t* bodies = nullptr) {
  const ElfImage image(std::string(XFM_AUDIT_SAMPLE_OBJECTS) + "/libsample_" + sample.name + ".so");
  take_exports(image, sample);
  auto result = audit(image, sample.expected, read_target(XFM_TARGET_ROWS, sample.target));
  std::vector<CountTable> tables;
  for (const auto& file : sample.counts)
    tables.push_back(read_count_table(std::string(XFM_AUDIT_SAMPLE_SOURCES) + "/" + file));
  compare_counts(tables, result.bodies, result.findings);
  if (bodies != nullptr) *bodies = result.bodies.size();
  return result.findings;
}

TEST_P(AuditSample, GivesExactlyItsFindings) {
  const auto& sample = GetParam();
  std::size_t bodies = 0;
  const auto findings = findings_in(sample, &bodies);
  std::string text;
  for (const auto& finding : findings) text += finding.rule + "  " + finding.where + "  " + finding.detail + "\n";
  const auto meets = [](const Finding& found, const Due& due) {
    return Spoken(found.rule, found.where) == due.spoken && found.detail.find(due.detail) != std::string::npos;
  };
  std::map<std::string, int> wanted;
  for (const auto& due : sample.findings) {
    const auto found = std::ranges::count_if(findings, [&](const Finding& f) { return meets(f, due); });
    EXPECT_GE(found, ++wanted[due.spoken.first + " " + due.spoken.second + " " + due.detail])
        << due.spoken.first << " is silent about " << due.spoken.second << " " << due.detail << "\n" << text;
  }
  for (const auto& found : findings)
    EXPECT_TRUE(std::ranges::any_of(sample.findings, [&](const Due& due) { return meets(found, due); }))
        << "unexpected: " << found.rule << " " << found.where << "\n" << text;
  if (sample.name == "good") {
    EXPECT_GE(bodies, 10U);
  } else if (!sample.name.starts_with("good_")) {
    EXPECT_FALSE(sample.findings.empty()) << "a faulty sample names its fault";
  }
}

INSTANTIATE_TEST_SUITE_P(Audit, AuditSample, testing::ValuesIn(all_samples()),
                         [](const auto& sample) { return sample.param.name; });

TEST(AuditRules, EveryRuleIsSeenToSpeak) {
  std::set<std::string> spoken;
  for (const auto& sample : all_samples())
    for (const auto& due : sample.findings) spoken.insert(due.spoken.first);
  std::set<std::string> rules{"counts", "fence"};
  for (const auto& rule : code_rules()) rules.insert(rule.name);
  for (const auto& rule : flow_rules()) rules.insert(rule.name);
  for (const auto& rule : library_rules()) rules.insert(rule.name);
  EXPECT_EQ(spoken, rules);
}

// Every sentence that a rule can say, as it stands in the rules' sources, is said about some sample.
TEST(AuditRules, EverySentenceIsSeen) {
  std::string said;
  for (const auto& sample : all_samples())
    for (const auto& finding : findings_in(sample)) said += finding.detail + "\n";
  int sentences = 0;
  for (const auto* file : {"code_rules.cpp", "flow_rules.cpp", "library_rules.cpp", "fences.cpp", "audit.cpp", "counts.cpp"}) {
    std::ifstream in(std::string(XFM_AUDIT_SOURCES) + "/" + file);
    ASSERT_TRUE(in) << file;
    const std::string source{std::istreambuf_iterator<char>(in), {}};
    static const std::regex kStatement("[^;]+;");
    static const std::regex kText("\"([^\"\n]*)\"");
    for (std::sregex_iterator statement(source.begin(), source.end(), kStatement), end; statement != end; ++statement) {
      const std::string code = statement->str();
      if (code.find("fail(") != code.npos || code.find("throw ") != code.npos) continue;  // of tables, tested below
      for (std::sregex_iterator text(code.begin(), code.end(), kText); text != end; ++text) {
        const std::string sentence = (*text)[1];
        if (words(sentence).size() < 2) continue;
        ++sentences;
        EXPECT_NE(said.find(sentence), std::string::npos) << file << ": no sample gives \"" << sentence << '"';
      }
    }
  }
  EXPECT_GT(sentences, 60);
}

TEST(AuditTables, RefuseWhatTheyCannotRead) {
  const auto path = testing::TempDir() + "/audit_counts." + std::to_string(getpid()) + ".tsv";
  const auto reason = [&](const std::string& text, const std::string& choice = "") -> std::string {
    std::ofstream(path) << text;
    try {
      (void)read_count_table(path + choice);
    } catch (const BadTable& error) {
      return error.what();
    }
    return "accepted";
  };
  const std::string header = "function\tadds\n";
  EXPECT_NE(reason(header + "f\tmany\n").find(":2: 'many' is no count"), std::string::npos);
  EXPECT_NE(reason(header + "f\t1\t2\n").find(":2: a row of 3 cells"), std::string::npos);
  EXPECT_NE(reason(header + "f\t1\nf\t1\n").find(":3: f stands twice"), std::string::npos);
  EXPECT_NE(reason("function\tvaddss+nothing\nf\t1\n").find("'nothing' is no count column"), std::string::npos);
  EXPECT_NE(reason(header).find("no row"), std::string::npos);
  EXPECT_EQ(reason(header + "f\t<=3\n"), "accepted");
  const std::string mixed = "name\tplan\tadds\ntwo\t2 pf 3\t4\n";
  EXPECT_EQ(reason(mixed, ":adds,adds=packed_add+packed_sub"), "accepted");
  EXPECT_NE(reason(mixed).find("'plan' is no count column"), std::string::npos);
  EXPECT_NE(reason(mixed, ":muls").find("no column 'muls'"), std::string::npos);
}

TEST(AuditTables, TellWhatATargetMayBeMadeOf) {
  const auto base = read_target(XFM_TARGET_ROWS, "base"), widest = read_target(XFM_TARGET_ROWS, "v4");
  EXPECT_TRUE(base.is_base && base.sets == std::set<std::string>{"AVX"} && base.widest == 256);
  EXPECT_TRUE(!widest.is_base && widest.admits("FMA") && widest.admits("AVX512F_512") && widest.widest == 512);
  EXPECT_THROW((void)read_target(XFM_TARGET_ROWS, "v5"), BadTable);
  EXPECT_THROW((void)read_target(XFM_TARGET_ROWS "x", "base"), BadTable);
}

TEST(AuditImage, RefusesWhatIsNoSharedObject) {
  EXPECT_THROW(ElfImage("/nonexistent"), BadImage);
  EXPECT_THROW(ElfImage(std::string(XFM_AUDIT_SAMPLE_SOURCES) + "/good.S"), BadImage);
  const auto cut = testing::TempDir() + "/audit_cut." + std::to_string(getpid()) + ".so";
  fs::copy_file(std::string(XFM_AUDIT_SAMPLE_OBJECTS) + "/libsample_good.so", cut,
                fs::copy_options::overwrite_existing);
  fs::resize_file(cut, fs::file_size(cut) / 2);
  EXPECT_THROW(ElfImage{cut}, BadImage);
}

}  // namespace
