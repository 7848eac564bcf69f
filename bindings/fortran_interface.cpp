#include "bindings/fortran_interface.h"

#include <map>
#include <vector>

#include "generator/check.h"
#include "generator/table.h"

namespace xfm {
namespace {

struct Argument {
  std::string name, declaration;
};

// By C type; an array of elements is contiguous and as long as the function takes it.
const std::map<std::string, std::string> kTypes = {
    {"const Xfm32f*", "real(c_float), intent(in) :: @(*)"},
    {"Xfm32f*", "real(c_float), intent(inout) :: @(*)"},
    {"const Xfm64f*", "real(c_double), intent(in) :: @(*)"},
    {"Xfm64f*", "real(c_double), intent(inout) :: @(*)"},
    {"const Xfm32fc*", "complex(c_float_complex), intent(in) :: @(*)"},
    {"Xfm32fc*", "complex(c_float_complex), intent(inout) :: @(*)"},
    {"const Xfm64fc*", "complex(c_double_complex), intent(in) :: @(*)"},
    {"Xfm64fc*", "complex(c_double_complex), intent(inout) :: @(*)"},
    {"int", "integer(c_int), value :: @"},
    {"int*", "integer(c_int), intent(out) :: @"},
    {"void*", "type(c_ptr), value :: @"},
    {"XfmDCT4State_32f*", "type(c_ptr), value :: @"},
    {"XfmDCT4State_64f*", "type(c_ptr), value :: @"},
    {"XfmDCT4State_32f**", "type(c_ptr), intent(out) :: @"},
    {"XfmDCT4State_64f**", "type(c_ptr), intent(out) :: @"},
};

// "const Xfm32f* src" -> its name and declaration.
Argument argument_of(const std::string& c_text) {
  const size_t start = c_text.find_first_not_of(' '), space = c_text.rfind(' ');
  const std::string type = c_text.substr(start, space - start), name = c_text.substr(space + 1);
  const auto found = kTypes.find(type);
  if (found == kTypes.end()) throw InputError("no Fortran type for '" + type + "'");
  std::string declaration = found->second;
  return {name, declaration.replace(declaration.find('@'), 1, name)};
}

std::vector<Argument> arguments_of(const Function& f) {
  std::vector<Argument> arguments;
  if (f.arguments == "void") return arguments;
  for (const std::string& text : split(f.arguments, ',')) arguments.push_back(argument_of(text));
  return arguments;
}

std::string interface_of(const Function& f) {
  std::string names, declarations;
  for (const Argument& a : arguments_of(f)) {
    names += (names.empty() ? "" : ", ") + a.name;
    declarations += "      " + a.declaration + "\n";
  }
  const std::string doc = f.doc.empty() ? "" : "    ! " + f.doc + "\n";
  const std::string result = f.returns == "XfmStatus" ? "integer(c_int32_t) :: status" : "type(c_ptr) :: status";
  return doc + "    function " + f.name + "(" + names + ") result(status) bind(C, name=\"" + f.name + "\")\n      import\n" +
         declarations + "      " + result + "\n    end function\n";
}

}  // namespace

std::string fortran_interfaces(const FunctionList& list) {
  std::string text = "  interface\n";
  for (const Function& f : list.functions()) text += interface_of(f);
  return text + "  end interface\n";
}

}  // namespace xfm
