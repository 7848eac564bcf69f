#!/bin/bash
# sanitizers.sh SOURCE BUILD [thread]: generators, audit, tool and tests once more with the address and undefined-behaviour
# sanitizers. What the generators write must be what the build has, byte for byte, and nobody may say anything. With `thread`
# the library and its program of threads with the sanitizer for data races.
set -euo pipefail
source=$1 build=$2 sanitizers=${3:-address,undefined}
work=$(mktemp -d "$build/sanitized.XXXXXX")  # in the build, so that a compiler cache knows the library's objects
trap 'rm -rf "$work"' EXIT
export ASAN_OPTIONS=detect_leaks=1:verify_asan_link_order=0 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
export TSAN_OPTIONS=halt_on_error=1
echo leak:libfontconfig >"$work/leaks"  # it keeps what it read of the fonts until the program ends
export LSAN_OPTIONS=suppressions=$work/leaks:print_suppressions=0

built() {  # targets
  cmake -S "$source" -B "$work" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_PROJECT_Xfm_INCLUDE="$source/tests/scripts/sanitized.cmake" \
    -DXFM_SANITIZERS="$sanitizers" -DXFM_TARGETS=base -DXFM_PYTHON=OFF >/dev/null
  cmake --build "$work" -j "$(nproc)" --target "$@" >"$work/log" 2>&1 || { tail -50 "$work/log" >&2; exit 1; }
}

if [ "$sanitizers" = thread ]; then
  built threads_test complex_faults
  "$work/tests/threads_test"
  said=$(XFM_FAULT=one-scratch-for-all LD_PRELOAD=$work/tests/libcomplex_faults.so \
    "$work/tests/threads_test" --gtest_filter='*OneThread' 2>&1) && { echo "a race was not seen" >&2; exit 1; }
  [[ $said == *"data race"* ]] || { echo "$said" >&2; exit 1; }
  echo "a race in a kernel is seen"
  exit
fi

tests=(frame_functions_test frame_dispatch_test frame_library_test generator_graph_test generator_flows_test generator_plan_test
  generator_text_test output_test pack_programs_test complex_plans_test complex_memory_test complex_values_test real_flows_test
  real_memory_test wht_plan_test dct4_plan_test audit_samples_test cpp_test tool_test sound_test)
built xfmgene9 xfm_audit xfm xfm_demo audit_samples "${tests[@]}"

cd "$build"
compared=0
for unit in {src,dft,rdft,wht,dct4}/*.cpp; do
  cmp "$unit" "$work/$unit"
  compared=$((compared + 1))
done
"$work/audit/xfm_audit" report lib/libxfmgene9.so.6.1 --target "$source/plans/targets.tsv:base" --report "$work/bodies.tsv"
cmp reports/audit_bodies.tsv "$work/bodies.tsv"
[ "$compared" -gt 15 ] || exit 1
echo "$compared files the same"

# But for the one that looks at the memory taken.
ctest --test-dir "$work" --output-on-failure --no-tests=error -j "$(nproc)" -R \
  '^(Functions|GenFrame|Dispatchers|Names|Core|Generator|Output|Pack|ComplexPlans|RealFlows|RealPlans|Plans|Audit|Cpp|Tool|Sound|Strongest)|/(GeneratorFlows|ComplexMemory|ComplexValues|RealMemory|AuditSample|PackedPrograms)' \
  -E DemoTakesPipes | sed -n '/tests passed/p; /\*\*\*/p; /^ERROR/p; /runtime error/p'
