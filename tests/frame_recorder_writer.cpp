// Writes a recorder in the place of every kernel, and the table of dispatchers over them.
#include "generator/functions.h"
#include "generator/program.h"
#include "generator/text.h"

namespace {

std::string recorder(const xfm::Function& kernel) {
  return kernel.declaration() + " {\n  recorded_call = {\"" + kernel.name + "\", src, dst, flag, " +
         (kernel.takes_buffer() ? "buffer" : "nullptr") + "};\n  return kRecordedStatus;\n}\n";
}

std::string row(const xfm::FunctionList& list, const xfm::Function& dispatcher) {
  const auto kernels = list.kernels(dispatcher.name);
  return "    {\"" + dispatcher.name + "\", reinterpret_cast<void (*)()>(" + dispatcher.name + "), " +
         (dispatcher.takes_buffer() ? "true" : "false") + ", " + std::to_string(kernels.front()->size) + ", " +
         std::to_string(kernels.back()->size) + "},\n";
}

void program(int argc, char** argv) {
  if (argc != 3) throw xfm::InputError("usage: frame_recorder_writer FUNCTIONS.tsv OUTPUT");
  const xfm::FunctionList list = xfm::FunctionList::read(argv[1]);
  std::string recorders, rows;
  int count = 0;
  for (const xfm::Function& function : list.functions()) {
    if (function.kind == xfm::FunctionKind::Kernel) recorders += recorder(function);
    if (function.kind != xfm::FunctionKind::Dispatcher) continue;
    rows += row(list, function);
    ++count;
  }
  xfm::write_file(argv[2], "#include \"tests/frame_recorder.h\"\n#include \"xfm.h\"\n\nRecordedCall recorded_call;\n\n" +
                               recorders + "\nconst RecordedDispatcher recorded_dispatchers[] = {\n" + rows +
                               "};\nconst int recorded_dispatcher_count = " + std::to_string(count) + ";\n");
}

}  // namespace

int main(int argc, char** argv) { return xfm::run_program(argc, argv, program); }
