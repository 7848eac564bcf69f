#include "promise.h"

#include <charconv>
#include <limits>

namespace xfm::audit {
namespace {

struct FamilyRow {
  std::string_view stem;
  Family family;
  Layout layout;
};

constexpr FamilyRow kFamilies[] = {
    {"DFTFwd_CToC_", Family::Complex, Layout::None},
    {"DFTInv_CToC_", Family::Complex, Layout::None},
    {"DFTFwd_RToCCS_", Family::RealForward, Layout::Ccs},
    {"DFTFwd_RToPack_", Family::RealForward, Layout::Pack},
    {"DFTFwd_RToPerm_", Family::RealForward, Layout::Perm},
    {"DFTInv_CCSToR_", Family::RealInverse, Layout::Ccs},
    {"DFTInv_PackToR_", Family::RealInverse, Layout::Pack},
    {"DFTInv_PermToR_", Family::RealInverse, Layout::Perm},
    {"Hartley_", Family::Hartley, Layout::None},
    {"WHT_", Family::WalshHadamard, Layout::None},
};

// First row that names the size wins. `step` picks every step-th size from `from` on. Which sizes there are the expected
// exports say.
struct SizeRow {
  Family family;
  std::string_view type;
  int from, to, step;
  Form form;
  Gate gate;
};

constexpr int kNoEnd = std::numeric_limits<int>::max();
constexpr SizeRow kSizes[] = {
    {Family::Complex, "32fc", 1, 5, 1, Form::Scalar, Gate::Plain},
    {Family::Complex, "32fc", 16, kNoEnd, 16, Form::Bits256, Gate::Gate32Inline},
    {Family::Complex, "32fc", 6, kNoEnd, 1, Form::Bits128, Gate::Gate16Twin},
    {Family::Complex, "64fc", 1, 4, 1, Form::Bits128, Gate::Gate16Inline},
    {Family::Complex, "64fc", 8, 16, 4, Form::Bits256, Gate::Gate32Inline},
    {Family::Complex, "64fc", 32, 32, 1, Form::Bits256, Gate::Gate32Inline},
    {Family::Complex, "64fc", 20, kNoEnd, 4, Form::Bits256, Gate::Plain},
    {Family::Complex, "64fc", 5, kNoEnd, 1, Form::Bits128, Gate::Gate16Twin},
    {Family::RealForward, "32f", 1, kNoEnd, 1, Form::Scalar, Gate::Plain},
    {Family::RealForward, "64f", 1, kNoEnd, 1, Form::Scalar, Gate::Plain},
    {Family::RealInverse, "32f", 1, kNoEnd, 1, Form::Scalar, Gate::Plain},
    {Family::RealInverse, "64f", 1, kNoEnd, 1, Form::Scalar, Gate::Plain},
    {Family::Hartley, "32f", 1, kNoEnd, 1, Form::Scalar, Gate::Plain},
    {Family::Hartley, "64f", 1, kNoEnd, 1, Form::Scalar, Gate::Plain},
    {Family::WalshHadamard, "32f", 1, 3, 1, Form::Scalar, Gate::Plain},
    {Family::WalshHadamard, "32f", 4, 4, 1, Form::Bits128, Gate::Gate16Inline},
    {Family::WalshHadamard, "32f", 5, 13, 1, Form::Bits128, Gate::Gate16Twin},
    {Family::WalshHadamard, "64f", 1, 2, 1, Form::Scalar, Gate::Plain},
    {Family::WalshHadamard, "64f", 3, 3, 1, Form::Bits128, Gate::Gate16Inline},
    {Family::WalshHadamard, "64f", 4, 13, 1, Form::Bits128, Gate::Gate16Twin},
};

constexpr int kLargestInRegisterOrder = 7;
constexpr std::string_view kKernelPrefix = "xfmg", kTwinPrefix = "owng", kTwinSuffix = "_unaligned";

const SizeRow* row_of(Family family, std::string_view type, int size) {
  for (const auto& row : kSizes) {
    const bool in_row = size >= row.from && size <= row.to && (size - row.from) % row.step == 0;
    if (row.family == family && row.type == type && in_row) return &row;
  }
  return nullptr;
}

std::optional<Promise> parse_stem(std::string_view stem) {
  for (const auto& family : kFamilies) {
    if (!stem.starts_with(family.stem)) continue;
    const auto rest = stem.substr(family.stem.size());
    int size = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), size);
    if (error != std::errc{} || end == rest.data() + rest.size() || *end != '_') return std::nullopt;
    const auto type = rest.substr(static_cast<std::size_t>(end - rest.data()) + 1);
    const auto* row = row_of(family.family, type, size);
    if (row == nullptr) return std::nullopt;
    const bool passes = family.family == Family::WalshHadamard && size > kLargestInRegisterOrder;
    return Promise{.family = family.family,
                   .layout = family.layout,
                   .type = std::string(type),
                   .size = size,
                   .form = row->form,
                   .gate = row->gate,
                   .shape = passes ? Shape::Passes : Shape::StraightLine};
  }
  return std::nullopt;
}

int half_spectrum_components(const Promise& promise) {
  return promise.layout == Layout::Ccs ? 2 * (promise.size / 2 + 1) : promise.size;
}

}  // namespace

int Promise::lines() const { return gate == Gate::Gate16Inline || gate == Gate::Gate32Inline ? 2 : 1; }

int Promise::src_components() const {
  switch (family) {
    case Family::Complex: return 2 * size;
    case Family::RealInverse: return half_spectrum_components(*this);
    case Family::WalshHadamard: return 1 << size;
    default: return size;
  }
}

int Promise::dst_components() const {
  return family == Family::RealForward   ? half_spectrum_components(*this)
         : family == Family::RealInverse ? size
                                         : src_components();
}

// The whole data set between passes and, from the orders of three passes on, one chunk besides.
int Promise::buffer_bytes() const {
  if (shape != Shape::Passes) return 0;
  const int main = (1 << size) * component_bytes();
  const int first_staged = is_double() ? 11 : 12;
  if (size < first_staged) return main;
  return main + (is_double() && size == 13 ? 8192 : 2048);
}

bool Promise::reads_component(int index) const {
  if (family != Family::RealInverse || layout != Layout::Ccs) return true;
  return index != 1 && (size % 2 != 0 || index != size + 1);
}

std::optional<Promise> promise_of(std::string_view function) {
  const bool is_twin = function.starts_with(kTwinPrefix) && function.ends_with(kTwinSuffix);
  if (!is_twin && !function.starts_with(kKernelPrefix)) return std::nullopt;
  function.remove_prefix(kKernelPrefix.size());
  if (is_twin) function.remove_suffix(kTwinSuffix.size());
  auto promise = parse_stem(function);
  if (!promise) return std::nullopt;
  if (is_twin && promise->gate != Gate::Gate16Twin) return std::nullopt;
  promise->is_twin = is_twin;
  return promise;
}

std::string twin_name(std::string_view kernel) {
  return std::string(kTwinPrefix) + std::string(kernel.substr(kKernelPrefix.size())) + std::string(kTwinSuffix);
}

const char* name_of(Family family) {
  switch (family) {
    case Family::Complex: return "complex";
    case Family::RealForward: return "real-forward";
    case Family::RealInverse: return "real-inverse";
    case Family::Hartley: return "hartley";
    case Family::WalshHadamard: return "walsh-hadamard";
  }
  return "?";
}

const char* name_of(Form form) {
  switch (form) {
    case Form::Scalar: return "scalar";
    case Form::Bits128: return "128";
    case Form::Bits256: return "256";
  }
  return "?";
}

const char* name_of(Gate gate) {
  switch (gate) {
    case Gate::Plain: return "plain";
    case Gate::Gate16Twin: return "gate16-twin";
    case Gate::Gate16Inline: return "gate16-inline";
    case Gate::Gate32Inline: return "gate32-inline";
  }
  return "?";
}

}  // namespace xfm::audit
