// Plants faults, one at a time, in a copy of the source and its build, builds what the fault needs, and names the test that
// caught it. The tree itself is never touched: in a mount namespace of its own a layer over one copy stands in the tree's
// place for each fault, so that nothing but what the fault changes is built again.
//
//   run_faults SOURCE BUILD FAULTS_FOLDER [--check] [--sample N] [--seed N] [--slow] [--only REGEX] [--jobs N] [--report FILE]
//
// A fault in a *.faults file: its name and what it is; the file, the text that stands there once (-) and what stands there
// instead (+); the targets to build; a regular expression of the tests that must catch it, the first of which to fail is
// named. `refused` in the place of `test` says with which words the build must stop. `harmless` in the place of both gives
// the reason why it changes nothing that anybody could see. `slow` is said of those that take more than half a minute: they
// have a sample of their own.
//
//   == status-size-error: the public number of a status
//   file include/xfm.h.in
//   -  xfmStatusSizeError = -6,
//   +  xfmStatusSizeError = -7,
//   build abi_numbers_test
//   test AbiNumbers
//
// --check only looks whether all faults can be planted. Exit status: 0 all caught, 1 survivors or bad faults, 77 no namespace.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct Edit {
  std::string file, before, after;
};

struct Fault {
  std::string name, what, place;  // place: file and line of its description
  std::vector<Edit> edits;
  std::string targets, tests, refused, harmless;
  bool slow = false;
};

struct Options {
  fs::path source, build, folder, report;
  bool check = false, slow = false;
  std::size_t sample = 0;
  unsigned seed = 1, jobs = 1;
  std::regex only{""};
};

std::string read(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error(path.string() + ": cannot be read");
  return {std::istreambuf_iterator<char>(in), {}};
}

// The rest of a line behind its first word.
std::string behind(const std::string& line, std::size_t word) { return line.size() > word ? line.substr(word + 1) : ""; }

std::vector<Fault> read_faults(const fs::path& path) {
  std::vector<Fault> faults;
  std::ifstream in(path);
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    const auto here = path.filename().string() + ":" + std::to_string(number);
    if (line.empty() || line[0] == '#') continue;
    if (line.starts_with("== ")) {
      const auto colon = line.find(": ");
      if (colon == std::string::npos) throw std::runtime_error(here + ": a fault says what it is behind a colon");
      faults.push_back({line.substr(3, colon - 3), line.substr(colon + 2), here, {}, {}, {}, {}, {}, false});
      continue;
    }
    if (faults.empty()) throw std::runtime_error(here + ": a line before the first fault");
    Fault& fault = faults.back();
    if (line.starts_with("file ")) fault.edits.push_back({behind(line, 4), "", ""});
    else if (line.starts_with("build ")) fault.targets = behind(line, 5);
    else if (line.starts_with("test ")) fault.tests = behind(line, 4);
    else if (line.starts_with("refused ")) fault.refused = behind(line, 7);
    else if (line == "slow") fault.slow = true;
    else if (line.starts_with("harmless ")) fault.harmless = behind(line, 8);
    else if ((line[0] == '-' || line[0] == '+') && !fault.edits.empty())
      (line[0] == '-' ? fault.edits.back().before : fault.edits.back().after) += line.substr(1) + "\n";
    else throw std::runtime_error(here + ": what is '" + line + "'?");
  }
  return faults;
}

// A file's text with one change of the fault in it. One-line texts may stand within a line.
std::string planted(std::string text, const Fault& fault, const Edit& edit) {
  std::string before = edit.before, after = edit.after;
  if (std::count(before.begin(), before.end(), '\n') == 1) {
    before.pop_back();
    if (!after.empty()) after.pop_back();
  }
  const auto at = before.empty() ? std::string::npos : text.find(before);
  if (at == std::string::npos || text.find(before, at + 1) != std::string::npos)
    throw std::runtime_error(fault.place + ": the text of " + fault.name + " does not stand once in " + edit.file);
  return text.replace(at, before.size(), after);
}

// The files that the fault changes, as they are then.
std::map<std::string, std::string> changed_files(const fs::path& source, const Fault& fault) {
  std::map<std::string, std::string> files;
  for (const auto& edit : fault.edits) {
    const auto [at, first] = files.try_emplace(edit.file);
    if (first) at->second = read(source / edit.file);
    at->second = planted(std::move(at->second), fault, edit);
  }
  return files;
}

void check_fault(const fs::path& source, const Fault& fault) {
  if (fault.edits.empty() || (fault.harmless.empty() && (fault.targets.empty() || fault.tests.empty() == fault.refused.empty())))
    throw std::runtime_error(fault.place + ": " + fault.name + " needs a file, targets, and tests or a refusal");
  (void)changed_files(source, fault);
}

int run(const std::string& command) {
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : 255;
}

std::string quoted(const std::string& text) { return "'" + std::regex_replace(text, std::regex("'"), "'\\''") + "'"; }

// A folder of this run that goes when the run ends.
class Folder {
 public:
  Folder() : path_(fs::temp_directory_path() / ("xfm_faults." + std::to_string(getpid()))) { fs::create_directories(path_); }
  ~Folder() { fs::remove_all(path_); }
  [[nodiscard]] const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

// Source and build as they were when the run began, with the times of all files; what stands beside the build is left out.
void take_snapshot(const Options& options, const fs::path& to) {
  const auto build = fs::relative(options.build, options.source);
  fs::create_directories(to / build.parent_path());
  const auto copied = run("cd " + quoted(options.source) + " && tar --exclude=./.git --exclude=./" + quoted(build.begin()->string()) +
                          " -cf - . | tar -xf - -C " + quoted(to) + " && cp -a " + quoted(options.build) + " " + quoted(to / build));
  if (copied != 0) throw std::runtime_error("the tree cannot be copied");
}

// The tree as somebody changed it: a layer over the layers below, the lowest of which is the snapshot.
class Layer {
 public:
  Layer(const Options& options, const fs::path& folder, std::string below) : options_(options), folder_(folder), below_(std::move(below)) {
    for (const auto* part : {"upper", "work"}) fs::create_directories(folder_ / part);
  }
  ~Layer() {
    std::error_code ignored;
    fs::permissions(folder_ / "work/work", fs::perms::owner_all, ignored);  // the kernel takes all rights from it
    fs::remove_all(folder_, ignored);
  }
  Layer(const Layer&) = delete;

  [[nodiscard]] std::string layers() const { return (folder_ / "upper").string() + ":" + below_; }
  [[nodiscard]] fs::path log() const { return folder_ / "log"; }

  void write(const std::string& file, const std::string& text) const {
    const auto path = folder_ / "upper" / file;
    fs::create_directories(path.parent_path());
    const auto rights = fs::status(options_.source / file).permissions();
    std::ofstream(path, std::ios::binary) << text;
    fs::permissions(path, rights);
  }

  // Runs a command with the layers in the tree's place; what it says goes to the log.
  [[nodiscard]] int inside(const std::string& command) const {
    const auto mount = "mount -t overlay faults -o userxattr," +
                       quoted("lowerdir=" + below_ + ",upperdir=" + (folder_ / "upper").string() + ",workdir=" + (folder_ / "work").string());
    // Root, whom nothing else holds off, shall not lose a device to a fault.
    const std::string guard = geteuid() == 0 ? "mount --rbind /dev /dev && mount -o remount,bind,ro /dev && " : "";
    const auto script = guard + mount + " " + quoted(options_.source) + " && cd " + quoted(options_.source) + " && " + command;
    return run("unshare -rm sh -c " + quoted(script) + " >" + quoted(log()) + " 2>&1 </dev/null");
  }

 private:
  const Options& options_;
  fs::path folder_;
  std::string below_;
};

// The first line of the log that the pattern finds, or the last one.
std::string line_with(const fs::path& log, const char* pattern) {
  std::istringstream in(read(log));
  const std::regex wanted(pattern);
  std::string line, last;
  for (std::smatch found; std::getline(in, line);) {
    if (std::regex_search(line, found, wanted)) return found.size() > 1 ? found[1].str() : line;
    if (!line.empty()) last = line;
  }
  return last;
}

std::string build_command(const Options& options, const std::string& targets) {
  const auto jobs = std::max(1U, std::thread::hardware_concurrency() / options.jobs);
  return "cmake --build " + quoted(options.build) + " -j " + std::to_string(jobs) + " --target " + targets;
}

std::string test_command(const Options& options, const std::string& tests) {
  return "ctest --test-dir " + quoted(options.build) + " --no-tests=error --stop-on-failure --timeout 600 -LE faults -R " + quoted(tests);
}

// A test may fail for want of time on a busy machine, which shows nothing: that is said beside its name.
std::string failed_test(const fs::path& log) {
  const bool late = std::regex_search(read(log), std::regex(R"(\(Timeout\))"));
  return line_with(log, R"(^\s+[0-9]+ - (\S+)(?!.*\(Skipped\)))") + (late ? " (timeout)" : "");
}

struct Outcome {
  std::string kind, by;  // caught, survived, without effect
};

// A line for each fault as it is done, behind a bar, and a table that is complete as far as the run has come.
class Report {
 public:
  explicit Report(const fs::path& path) {
    if (path.empty()) return;
    out_.open(path);
    out_ << "fault\twhat\toutcome\tby\tseconds" << std::endl;
  }
  void add(const Fault& fault, const Outcome& outcome, std::chrono::duration<double> taken, std::size_t done, std::size_t all) {
    const std::lock_guard lock(mutex_);
    const std::size_t width = 30, filled = width * done / all;
    std::printf("[%s%s] %zu of %zu  %s: %s%s%s, %.0f s\n", std::string(filled, '#').c_str(), std::string(width - filled, '.').c_str(), done, all,
                fault.name.c_str(), outcome.kind.c_str(), outcome.by.empty() ? "" : ", ", outcome.by.c_str(), taken.count());
    std::fflush(stdout);
    out_ << fault.name << '\t' << fault.what << '\t' << outcome.kind << '\t' << outcome.by << '\t' << taken.count() << std::endl;
  }

 private:
  std::mutex mutex_;
  std::ofstream out_;
};

Outcome outcome_of(const Options& options, const fs::path& snapshot, const Layer& layer, const Fault& fault) {
  for (const auto& [file, text] : changed_files(snapshot, fault)) layer.write(file, text);
  if (layer.inside(build_command(options, fault.targets)) != 0) {
    const bool due = !fault.refused.empty() && std::regex_search(read(layer.log()), std::regex(fault.refused));
    return due ? Outcome{"caught", "the build: " + line_with(layer.log(), fault.refused.c_str())}
               : Outcome{"survived", "cannot be built: " + line_with(layer.log(), "error|refused|: .*:[0-9]+: |instead of|cannot|FAILED")};
  }
  if (fault.tests.empty() || layer.inside(test_command(options, fault.tests)) == 0) return {"survived", ""};
  return {"caught", failed_test(layer.log())};
}

// Without a fault all that is built is built and all the tests that are asked pass, or nothing is shown. A sample is taken
// where all tests run anyway.
void check_without_fault(const Options& options, const Layer& layer, const std::vector<Fault>& faults) {
  std::set<std::string> all_targets, all_tests;
  for (const auto& fault : faults) {
    if (!fault.targets.empty()) all_targets.insert(fault.targets);
    if (!fault.tests.empty()) all_tests.insert(fault.tests);
  }
  std::string targets, tests;
  for (const auto& some : all_targets) targets += " " + some;
  for (const auto& some : all_tests) tests += (tests.empty() ? "" : "|") + some;
  std::string wrong;
  if (!targets.empty() && layer.inside(build_command(options, targets)) != 0) wrong = "it cannot be built";
  else if (options.sample == 0 && !tests.empty() && layer.inside(test_command(options, tests)) != 0) wrong = failed_test(layer.log());
  if (wrong.empty()) return;
  std::cerr << read(layer.log());
  throw std::runtime_error("without a fault: " + wrong);
}

std::string obstacle(const Options& options) {
  if (fs::relative(options.build, options.source).begin()->string() == "..") return "it takes a build folder below the source";
  if (run("unshare -rm true 2>/dev/null") != 0) return "it takes mount namespaces";
  const Folder folder;
  return Layer(options, folder.path(), options.source.string()).inside("true") == 0 ? "" : "it takes overlay mounts";
}

int run_all(const Options& options, const std::vector<Fault>& faults) {
  if (const auto reason = obstacle(options); !reason.empty()) {
    std::printf("skipped: %s\n", reason.c_str());
    return 77;
  }
  const Folder folder;
  const auto snapshot = folder.path() / "snapshot";
  take_snapshot(options, snapshot);
  const Layer sound(options, folder.path() / "sound", snapshot.string());
  check_without_fault(options, sound, faults);
  Report report(options.report);
  std::vector<Outcome> outcomes(faults.size());
  std::atomic<std::size_t> next = 0, done = 0;
  const auto work = [&](unsigned worker) {
    for (std::size_t i; (i = next++) < faults.size();) {
      auto& outcome = outcomes[i];
      const auto start = std::chrono::steady_clock::now();
      try {
        const Layer layer(options, folder.path() / std::to_string(worker), sound.layers());
        outcome = faults[i].harmless.empty() ? outcome_of(options, snapshot, layer, faults[i]) : Outcome{"without effect", faults[i].harmless};
      } catch (const std::exception& error) {
        outcome = {"survived", std::string("could not be planted: ") + error.what()};
      }
      report.add(faults[i], outcome, std::chrono::steady_clock::now() - start, ++done, faults.size());
    }
  };
  std::vector<std::thread> workers;
  for (unsigned w = 1; w <= options.jobs; ++w) workers.emplace_back(work, w);
  for (auto& worker : workers) worker.join();

  const auto number = [&](const char* kind) { return std::ranges::count(outcomes, kind, &Outcome::kind); };
  const auto survived = number("survived");
  std::printf("%zu faults planted: %td caught, %td survived, %td argued to be without effect\n", faults.size(), number("caught"), survived,
              number("without effect"));
  return survived == 0 ? 0 : 1;
}

Options options_of(int argc, char** argv) {
  Options options;
  std::vector<std::string> places;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const auto value = [&] { return i + 1 < argc ? std::string(argv[++i]) : throw std::runtime_error(word + " takes a value"); };
    if (word == "--check") options.check = true;
    else if (word == "--slow") options.slow = true;
    else if (word == "--sample") options.sample = std::stoul(value());
    else if (word == "--seed") options.seed = static_cast<unsigned>(std::stoul(value()));
    else if (word == "--jobs") options.jobs = static_cast<unsigned>(std::stoul(value()));
    else if (word == "--only") options.only = value();
    else if (word == "--report") options.report = value();
    else if (word.starts_with("--")) throw std::runtime_error("unknown option " + word);
    else places.push_back(word);
  }
  if (places.size() != 3) throw std::runtime_error("usage: run_faults SOURCE BUILD FAULTS_FOLDER [options]");
  options.source = fs::canonical(places[0]);
  options.build = fs::canonical(places[1]);
  options.folder = places[2];
  return options;
}

int program(const Options& options) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(options.folder))
    if (entry.path().extension() == ".faults") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  std::vector<Fault> faults;
  for (const auto& file : files)
    for (auto& fault : read_faults(file))
      if (std::regex_search(fault.name, options.only)) faults.push_back(std::move(fault));
  const auto bad = std::erase_if(faults, [&](const Fault& fault) {
    try {
      check_fault(options.source, fault);
      return false;
    } catch (const std::exception& error) {
      std::printf("%s\n", error.what());
      return true;
    }
  });
  std::printf("%zu faults can be planted, %zu cannot\n", faults.size(), bad);
  if (options.check) return bad == 0 ? 0 : 1;
  if (options.sample != 0) {
    std::erase_if(faults, [&](const Fault& fault) { return !fault.harmless.empty() || fault.slow != options.slow; });
    std::shuffle(faults.begin(), faults.end(), std::mt19937(options.seed));
    faults.resize(std::min(options.sample, faults.size()));
    std::printf("a sample of %zu by seed %u\n", faults.size(), options.seed);
  }
  return std::max(run_all(options, faults), bad == 0 || options.sample != 0 ? 0 : 1);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return program(options_of(argc, argv));
  } catch (const std::exception& error) {
    std::cerr << "run_faults: " << error.what() << '\n';
    return 1;
  }
}
