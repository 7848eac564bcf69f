#include "report.h"

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

}  // namespace xfm::audit
