// Every faulty sample must give exactly the findings written at its head, the sound one none; and every rule must be
// seen to speak by some sample.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "counts.h"

namespace {

using namespace xfm::audit;
namespace fs = std::filesystem;
using Spoken = std::pair<std::string, std::string>;  // rule, where

struct Sample {
  std::string name;
  std::multiset<Spoken> findings;  // expected, each at least once
  std::vector<std::string> counts;
  Expected expected;
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
    if (parts[0] == "expects:") sample.findings.emplace(parts.at(1), parts.at(2));
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

TEST_P(AuditSample, GivesExactlyItsFindings) {
  auto sample = GetParam();
  const ElfImage image(std::string(XFM_AUDIT_SAMPLE_OBJECTS) + "/libsample_" + sample.name + ".so");
  take_exports(image, sample);
  auto result = audit(image, sample.expected);
  std::vector<CountTable> tables;
  for (const auto& file : sample.counts)
    tables.push_back(read_count_table(std::string(XFM_AUDIT_SAMPLE_SOURCES) + "/" + file));
  compare_counts(tables, result.bodies, result.findings);

  std::multiset<Spoken> found;
  std::string text;
  for (const auto& finding : result.findings) {
    found.emplace(finding.rule, finding.where);
    text += finding.rule + "  " + finding.where + "  " + finding.detail + "\n";
  }
  for (const auto& spoken : sample.findings)
    EXPECT_GE(found.count(spoken), sample.findings.count(spoken))
        << spoken.first << " is silent about " << spoken.second;
  for (const auto& spoken : found)
    EXPECT_TRUE(sample.findings.contains(spoken)) << "unexpected: " << spoken.first << " " << spoken.second << "\n"
                                                  << text;
  if (sample.name == "good") {
    EXPECT_GE(result.bodies.size(), 10U);
  } else {
    EXPECT_FALSE(sample.findings.empty()) << "a faulty sample names its fault";
  }
}

INSTANTIATE_TEST_SUITE_P(Audit, AuditSample, testing::ValuesIn(all_samples()),
                         [](const auto& sample) { return sample.param.name; });

TEST(AuditRules, EveryRuleIsSeenToSpeak) {
  std::set<std::string> spoken;
  for (const auto& sample : all_samples())
    for (const auto& [rule, where] : sample.findings) spoken.insert(rule);
  std::set<std::string> rules{"counts"};
  for (const auto& rule : code_rules()) rules.insert(rule.name);
  for (const auto& rule : flow_rules()) rules.insert(rule.name);
  for (const auto& rule : library_rules()) rules.insert(rule.name);
  EXPECT_EQ(spoken, rules);
}

TEST(AuditTables, RefuseWhatTheyCannotRead) {
  const auto path = testing::TempDir() + "/audit_counts.tsv";
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

TEST(AuditImage, RefusesWhatIsNoSharedObject) {
  EXPECT_THROW(ElfImage("/nonexistent"), BadImage);
  EXPECT_THROW(ElfImage(std::string(XFM_AUDIT_SAMPLE_SOURCES) + "/good.S"), BadImage);
  const auto cut = testing::TempDir() + "/audit_cut.so";
  fs::copy_file(std::string(XFM_AUDIT_SAMPLE_OBJECTS) + "/libsample_good.so", cut,
                fs::copy_options::overwrite_existing);
  fs::resize_file(cut, fs::file_size(cut) / 2);
  EXPECT_THROW(ElfImage{cut}, BadImage);
}

}  // namespace
