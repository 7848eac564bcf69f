// Random plans: text is a plan of the length it is given for, or is refused with a reason; what is read prints as it was.
#include <string>

#include "flows/plan.h"
#include "generator/check.h"
#include "tests/fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    const xfm::Plan plan = xfm::parse_plan(text);
    fuzz::require(plan.length >= 1);
    fuzz::require(xfm::to_text(xfm::parse_plan(xfm::to_text(plan))) == xfm::to_text(plan));
  } catch (const xfm::InputError&) {
  }
  return 0;
}
