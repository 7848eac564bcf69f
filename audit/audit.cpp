#include "audit.h"

#include "fences.h"

namespace xfm::audit {
namespace {

BodySummary summary_of(const Body& body) {
  BodySummary out{.function = body.name,
                  .promise = body.promise,
                  .lines = {},
                  .frame_bytes = body.frame_bytes,
                  .code_bytes = body.bytes};
  for (const auto& line : body.lines) out.lines.emplace_back(line.name, line.counts);
  if (out.lines.empty()) out.lines.emplace_back("whole", body.whole);
  return out;
}

// A kernel and its twin do the same arithmetic, counted in the machine code of both.
void compare_twins(const std::vector<BodySummary>& bodies, Findings& findings) {
  std::map<std::string, const BodySummary*> by_name;
  for (const auto& body : bodies) by_name[body.function] = &body;
  for (const auto& body : bodies) {
    if (!body.promise || body.promise->gate != Gate::Gate16Twin || body.promise->is_twin) continue;
    const auto twin = by_name.find(twin_name(body.function));
    if (twin == by_name.end()) continue;
    for (const auto* column : {"adds", "muls", "widen", "narrow"}) {
      const int own = body.lines.front().second.at(column), other = twin->second->lines.front().second.at(column);
      if (own == other) continue;
      findings.push_back({"twin-arithmetic", body.function,
                          std::string(column) + ": " + std::to_string(own) + ", in the twin " + std::to_string(other)});
    }
  }
}

}  // namespace

AuditResult audit(const ElfImage& image, const Expected& expected) {
  AuditResult result;
  const Decoder decoder;
  const Surroundings around(image, decoder);
  auto body_rules = code_rules();
  for (const auto& rule : flow_rules()) body_rules.push_back(rule);
  std::map<std::string, Unfenced> unfenced;
  for (const auto& [address, function] : around.functions()) {
    const auto body = analyse(image, decoder, around, function);
    for (const auto& rule : body_rules) rule.check(body, around, result.findings);
    unfenced[body.name] = unfenced_in(body, around);
    if (!body.code.empty()) result.bodies.push_back(summary_of(body));
  }
  for (const auto& rule : library_rules()) rule.check(image, around, expected, result.findings);
  compare_twins(result.bodies, result.findings);
  check_fences(unfenced, result.findings);
  return result;
}

}  // namespace xfm::audit
