#include "generator/functions.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>

#include "generator/check.h"
#include "generator/table.h"

namespace xfm {
namespace {

template <class Enum, size_t count>
using NamesOf = std::array<std::pair<std::string_view, Enum>, count>;

constexpr NamesOf<Gate, 4> kGateNames = {{{"Plain", Gate::Plain},
                                                         {"Gate16Twin", Gate::Gate16Twin},
                                                         {"Gate16Inline", Gate::Gate16Inline},
                                                         {"Gate32Inline", Gate::Gate32Inline}}};
constexpr NamesOf<ScaleRule, 3> kScaleNames = {{{"forward", ScaleRule::Forward},
                                                {"inverse", ScaleRule::Inverse},
                                                {"self-inverse", ScaleRule::SelfInverse}}};
constexpr NamesOf<FunctionKind, 3> kKindNames = {{{"kernel", FunctionKind::Kernel},
                                                  {"dispatcher", FunctionKind::Dispatcher},
                                                  {"entry", FunctionKind::Entry}}};
constexpr NamesOf<std::string_view, 4> kElementTypes = {
    {{"32f", "Xfm32f"}, {"64f", "Xfm64f"}, {"32fc", "Xfm32fc"}, {"64fc", "Xfm64fc"}}};

template <class Enum, size_t count>
std::optional<Enum> value_of(const NamesOf<Enum, count>& names, std::string_view name) {
  for (const auto& [text, value] : names)
    if (text == name) return value;
  return std::nullopt;
}

template <class Enum, size_t count>
std::string_view name_of(const NamesOf<Enum, count>& names, Enum value) {
  for (const auto& [text, named] : names)
    if (named == value) return text;
  throw InternalError("an enumerator has no name");
}

std::string replace_all(std::string text, std::string_view from, std::string_view to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

struct Range {
  int first, last;
};

// "7" or "2-64".
Range read_range(const TableRow& row, std::string_view text) {
  const std::vector<std::string> ends = split(text, '-');
  const auto number = [](const std::string& digits) { return digits.starts_with('0') ? 0 : decimal(digits).value_or(0); };
  const Range range = {number(ends.front()), number(ends.back())};
  if (ends.size() > 2 || range.first < 1 || range.last < range.first)
    row.fail("\"" + std::string(text) + "\" is not a range of sizes");
  return range;
}

// "Plain 2-5; Gate32Inline 16,32; Gate16Twin rest": the class of every size of `sizes`.
std::map<int, Gate> read_classes(const TableRow& row, Range sizes) {
  std::map<int, Gate> classes;
  const auto assign = [&](int size, Gate gate) {
    if (size < sizes.first || size > sizes.last) row.fail("a class for size " + std::to_string(size) + " out of range");
    if (!classes.emplace(size, gate).second) row.fail("two classes for size " + std::to_string(size));
  };
  for (const std::string& group : split(row["classes"], ';')) {
    const std::vector<std::string> words = split(trim(group), ' ');
    const auto gate = value_of(kGateNames, words.front());
    if (!gate || words.size() != 2) row.fail("\"" + group + "\" is not a class and its sizes");
    if (words[1] == "rest") {
      for (int size = sizes.first; size <= sizes.last; ++size) classes.emplace(size, *gate);
      continue;
    }
    for (const std::string& piece : split(words[1], ',')) {
      const Range range = read_range(row, piece);
      for (int size = range.first; size <= range.last; ++size) assign(size, *gate);
    }
  }
  if (classes.size() != static_cast<size_t>(sizes.last - sizes.first + 1)) row.fail("a size has no class");
  return classes;
}

// What all functions of a row share.
Function read_common(const TableRow& row) {
  Function function;
  function.part = row["part"];
  function.family = row["name"];
  function.returns = row["returns"];
  std::string element;
  if (row["type"] != "-") {
    const auto found = value_of(kElementTypes, std::string_view(row["type"]));
    if (!found) row.fail("\"" + row["type"] + "\" is not an element type");
    function.type = row["type"];
    element = *found;
  }
  function.arguments = replace_all(replace_all(row["arguments"], "{T}", element), "{t}", function.type);
  function.name = function.type.empty() ? function.family : function.family + "_" + function.type;
  for (const char* column : {"part", "name", "returns", "doc"})
    if (row[column].empty()) row.fail("an empty cell");
  if (!function.family.starts_with("xfmg")) row.fail("\"" + function.family + "\" does not begin with xfmg");
  return function;
}

// The kernel's arguments with the selecting one put before the flag.
std::string dispatcher_arguments(const TableRow& row, const std::string& kernel_arguments) {
  const std::string_view name = "int flag";
  const size_t flag = kernel_arguments.find(name);
  const size_t behind = flag + name.size();
  if (flag == std::string::npos || (behind < kernel_arguments.size() && kernel_arguments[behind] != ',')) row.fail("kernels without an argument \"int flag\"");
  return std::string(kernel_arguments).insert(flag, "int " + row["index"] + ", ");
}

class Reader {
 public:
  void add(const TableRow& row) {
    if (row["sizes"] == "-") {
      Function entry = read_common(row);
      entry.doc = replace_all(row["doc"], "{t}", entry.type);
      push(row, std::move(entry));
    } else {
      add_kernels(row);
    }
  }

  std::vector<Function> take() { return std::move(functions_); }

 private:
  void add_kernels(const TableRow& row) {
    Function kernel = read_common(row);
    const Range sizes = read_range(row, row["sizes"]);
    const auto scale = value_of(kScaleNames, std::string_view(row["scale"]));
    if (!scale) row.fail("\"" + row["scale"] + "\" is not a scale rule");
    if (row["index"] != "len" && row["index"] != "order") row.fail("the index is neither len nor order");

    Function& dispatcher = dispatcher_of(row, kernel, sizes);
    dispatcher.arguments = dispatcher_arguments(row, kernel.arguments);
    next_size_[dispatcher.name] = sizes.last + 1;

    kernel.kind = FunctionKind::Kernel;
    kernel.dispatcher = dispatcher.name;
    kernel.scale = *scale;
    for (const auto& [size, gate] : read_classes(row, sizes)) {
      kernel.size = size;
      kernel.gate = gate;
      kernel.name = kernel.family + "_" + std::to_string(size) + "_" + kernel.type;
      push(row, kernel);
    }
  }

  // The dispatcher over a row's kernels: new, or the last one continued by the next sizes. Of several rows the
  // last has all the arguments.
  Function& dispatcher_of(const TableRow& row, const Function& kernel, Range sizes) {
    const auto next = next_size_.find(kernel.name);
    if (next == next_size_.end()) {
      Function dispatcher = kernel;
      dispatcher.kind = FunctionKind::Dispatcher;
      dispatcher.dispatcher = kernel.name;
      dispatcher.index = row["index"];
      dispatcher.doc = row["doc"];
      push(row, std::move(dispatcher));
      return functions_.back();
    }
    if (sizes.first != next->second) row.fail("sizes that do not continue those of the row before");
    const auto found = std::find_if(functions_.begin(), functions_.end(),
                                    [&](const Function& function) { return function.name == kernel.name; });
    check(found != functions_.end(), "a dispatcher with sizes is not in the list");
    return *found;
  }

  void push(const TableRow& row, Function function) {
    if (!names_.insert(function.name).second) row.fail(function.name + " is listed twice");
    functions_.push_back(std::move(function));
  }

  std::vector<Function> functions_;
  std::set<std::string> names_;
  std::map<std::string, int> next_size_;  // by dispatcher
};

}  // namespace

std::string_view to_string(Gate gate) { return name_of(kGateNames, gate); }
std::string_view to_string(ScaleRule scale) { return name_of(kScaleNames, scale); }
std::string_view to_string(FunctionKind kind) { return name_of(kKindNames, kind); }

std::string Function::declaration() const {
  return returns + " " + name + "(" + arguments + ")";
}

std::string Function::twin_name() const {
  check(gate == Gate::Gate16Twin, name + " has no twin");
  return "owng" + name.substr(std::string_view("xfmg").size()) + "_unaligned";
}

FunctionList FunctionList::read(const std::filesystem::path& path) {
  const Table table = Table::read(
      path, {"part", "name", "type", "returns", "arguments", "index", "sizes", "scale", "classes", "doc"});
  Reader reader;
  for (const TableRow& row : table.rows()) reader.add(row);
  FunctionList list;
  list.functions_ = reader.take();
  return list;
}

const Function* FunctionList::find(std::string_view name) const {
  const auto found = std::find_if(functions_.begin(), functions_.end(),
                                  [&](const Function& function) { return function.name == name; });
  return found == functions_.end() ? nullptr : &*found;
}

std::vector<const Function*> FunctionList::kernels(std::string_view dispatcher) const {
  std::vector<const Function*> kernels;
  for (const Function& function : functions_)
    if (function.kind == FunctionKind::Kernel && function.dispatcher == dispatcher) kernels.push_back(&function);
  return kernels;
}

FunctionList FunctionList::restricted_to(const std::vector<std::string>& names) const {
  FunctionList list;
  std::set<std::string> unused(names.begin(), names.end());
  for (const Function& function : functions_) {
    bool wanted = false;
    for (const std::string& name : names) {
      if (name.empty()) continue;
      if (name != function.part && name != function.family && name != function.dispatcher && name != function.name)
        continue;
      wanted = true;
      unused.erase(name);
    }
    if (wanted) list.functions_.push_back(function);
  }
  if (!unused.empty()) throw InputError("no function belongs to \"" + *unused.begin() + "\"");
  return list;
}

}  // namespace xfm
