#include "report.h"

#include <fstream>

#include "counts.h"

namespace xfm::audit {

void write_bodies(std::ostream& out, const std::vector<BodySummary>& bodies) {
  out << "function\tline\tfamily\ttype\tsize\tform\tgate\tframe_bytes\tcode_bytes";
  for (const auto& column : count_columns()) out << '\t' << column;
  out << '\n';
  for (const auto& body : bodies) {
    for (const auto& [line, counts] : body.lines) {
      out << body.function << '\t' << line;
      if (const auto& p = body.promise)
        out << '\t' << name_of(p->family) << '\t' << p->type << '\t' << p->size << '\t' << name_of(p->form) << '\t'
            << (p->is_twin ? "twin" : name_of(p->gate));
      else out << "\tframe\t-\t-\t-\t-";
      out << '\t' << body.frame_bytes << '\t' << body.code_bytes;
      for (const auto& column : count_columns()) out << '\t' << counts.at(column);
      out << '\n';
    }
  }
}

void write_joined(std::ostream& out, const std::vector<std::string>& reports, const std::vector<BodySummary>& bodies) {
  constexpr const char* kJoined[] = {"adds",       "muls",     "packed_add", "packed_sub", "packed_addsub",
                                     "packed_mul", "shuffles", "inserts",    "broadcasts", "blends",
                                     "logic",      "copies",   "reloads",    "spills",     "instructions"};
  std::map<std::string, const BodySummary*> by_name;
  for (const auto& body : bodies) by_name[body.function] = &body;
  std::string common_header;
  for (const auto& path : reports) {
    std::ifstream in(path);
    std::string header, row;
    if (!std::getline(in, header)) throw BadTable(path + ": cannot be read");
    if (!common_header.empty() && header != common_header)
      throw BadTable(path + ": another header than " + reports.front());
    if (common_header.empty()) {
      out << header;
      for (const auto* column : kJoined) out << "\tcode " << column;
      out << "\tcode bytes\tstack bytes\n";
    }
    common_header = header;
    while (std::getline(in, row)) {
      const auto body = by_name.find(split(row, '\t').front());
      if (body == by_name.end()) throw BadTable(path + ": " + row.substr(0, row.find('\t')) + " is not in the library");
      out << row;
      for (const auto* column : kJoined) out << '\t' << body->second->lines.front().second.at(column);
      out << '\t' << body->second->code_bytes << '\t' << body->second->frame_bytes << '\n';
    }
  }
}

}  // namespace xfm::audit
