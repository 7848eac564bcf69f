// Plants faults, one at a time, in a copy of the source and its build, builds what the fault needs, and names the test that
// caught it. The tree itself is never touched: in a mount namespace of its own each copy stands in the tree's place, so that
// nothing but what a fault changes is built again.
//
//   run_faults SOURCE BUILD FAULTS_FOLDER [--check] [--sample N] [--seed N] [--only REGEX] [--jobs N] [--report FILE]
//
// A fault in a *.faults file: its name and what it is; the file, the text that stands there once (-) and what stands there
// instead (+); the targets to build; a regular expression of the tests that must catch it. `harmless` in their place
// gives the reason why it changes nothing that anybody could see. `slow` keeps it out of samples: it builds kernels again.
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
  std::string targets, tests, harmless;
  bool slow = false;
};

struct Options {
  fs::path source, build, folder, report;
  bool check = false;
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
      faults.push_back({line.substr(3, colon - 3), line.substr(colon + 2), here, {}, {}, {}, {}, false});
      continue;
    }
    if (faults.empty()) throw std::runtime_error(here + ": a line before the first fault");
    Fault& fault = faults.back();
    if (line.starts_with("file ")) fault.edits.push_back({behind(line, 4), "", ""});
    else if (line.starts_with("build ")) fault.targets = behind(line, 5);
    else if (line.starts_with("test ")) fault.tests = behind(line, 4);
    else if (line == "slow") fault.slow = true;
    else if (line.starts_with("harmless ")) fault.harmless = behind(line, 8);
    else if ((line[0] == '-' || line[0] == '+') && !fault.edits.empty())
      (line[0] == '-' ? fault.edits.back().before : fault.edits.back().after) += line.substr(1) + "\n";
    else throw std::runtime_error(here + ": what is '" + line + "'?");
  }
  return faults;
}

// The text of a file with the fault in it. One-line texts may stand within a line.
std::string planted(const fs::path& source, const Fault& fault, const Edit& edit) {
  std::string text = read(source / edit.file), before = edit.before, after = edit.after;
  if (std::count(before.begin(), before.end(), '\n') == 1) {
    before.pop_back();
    if (!after.empty()) after.pop_back();
  }
  const auto at = before.empty() ? std::string::npos : text.find(before);
  if (at == std::string::npos || text.find(before, at + 1) != std::string::npos)
    throw std::runtime_error(fault.place + ": the text of " + fault.name + " does not stand once in " + edit.file);
  return text.replace(at, before.size(), after);
}

void check_fault(const fs::path& source, const Fault& fault) {
  if (fault.edits.empty() || (fault.harmless.empty() ? fault.targets.empty() || fault.tests.empty() : false))
    throw std::runtime_error(fault.place + ": " + fault.name + " needs a file, targets and tests");
  for (const auto& edit : fault.edits) (void)planted(source, fault, edit);
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

// A copy of the snapshot for one fault.
class Copy {
 public:
  Copy(const Options& options, const fs::path& folder, unsigned worker)
      : options_(options), snapshot_(folder / "snapshot"), folder_(folder / std::to_string(worker)) {
    fs::create_directories(folder_);
  }
  [[nodiscard]] fs::path tree() const { return folder_ / "tree"; }

  void renew() const {
    fs::remove_all(tree());
    if (run("cp -a " + quoted(snapshot_) + " " + quoted(tree())) != 0) throw std::runtime_error("the snapshot cannot be copied");
  }

  // Runs a command with the copy in the tree's place; what it says goes to the log.
  [[nodiscard]] int inside(const std::string& command) const {
    const auto script = "mount --bind " + quoted(tree()) + " " + quoted(options_.source) + " && cd " + quoted(options_.source) + " && " + command;
    return run("unshare -rm sh -c " + quoted(script) + " >" + quoted(log()) + " 2>&1 </dev/null");
  }
  [[nodiscard]] fs::path log() const { return folder_ / "log"; }

 private:
  const Options& options_;
  fs::path snapshot_, folder_;
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

// What caught it, or nothing.
std::string caught_by(const Options& options, const Copy& copy, const std::string& targets, const std::string& tests) {
  const auto build = quoted(options.build);
  if (copy.inside("cmake --build " + build + " -j 1 --target " + targets) != 0)
    return "the build: " + line_with(copy.log(), "error|refused|: .*:[0-9]+: |instead of|cannot");
  if (copy.inside("ctest --test-dir " + build + " --no-tests=error --timeout 600 -LE faults -R " + quoted(tests)) != 0)
    return line_with(copy.log(), R"(^\s+[0-9]+ - (\S+) \((?!Skipped))");
  return "";
}

struct Outcome {
  std::string kind, by;  // caught, survived, without effect
  double seconds = 0;
};

void show(const std::string& text, std::size_t done, std::size_t all) {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  const std::size_t width = 30, filled = all == 0 ? width : width * done / all;
  std::printf("[%s%s] %zu of %zu  %s\n", std::string(filled, '#').c_str(), std::string(width - filled, '.').c_str(), done, all, text.c_str());
  std::fflush(stdout);
}

Outcome outcome_of(const Options& options, const Copy& copy, const Fault& fault) {
  if (!fault.harmless.empty()) return {"without effect", fault.harmless, 0};
  const auto start = std::chrono::steady_clock::now();
  copy.renew();
  for (const auto& edit : fault.edits) {
    const auto text = planted(copy.tree(), fault, edit);  // which has the edits before it
    std::ofstream(copy.tree() / edit.file, std::ios::binary) << text;
  }
  const auto by = caught_by(options, copy, fault.targets, fault.tests);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  return {by.empty() ? "survived" : "caught", by, taken.count()};
}

// Without a fault all the tests that are asked must pass, or nothing is shown.
void check_without_fault(const Options& options, const fs::path& folder, const std::vector<Fault>& faults) {
  std::set<std::string> targets, tests;
  for (const auto& fault : faults) {
    if (!fault.harmless.empty()) continue;
    targets.insert(fault.targets);
    tests.insert(fault.tests);
  }
  if (tests.empty()) return;
  std::string all;
  for (const auto& names : targets) all += " " + names;
  const Copy copy(options, folder, 0);
  copy.renew();
  for (const auto& some : tests) {
    const auto by = caught_by(options, copy, all, some);
    if (by.empty()) continue;
    std::cerr << read(copy.log());
    throw std::runtime_error("without a fault: " + by);
  }
}

int run_all(const Options& options, const std::vector<Fault>& faults) {
  if (run("unshare -rm true 2>/dev/null") != 0 || fs::relative(options.build, options.source).begin()->string() == "..") {
    std::printf("skipped: it takes a mount namespace and a build folder below the source\n");
    return 77;
  }
  const Folder folder;
  take_snapshot(options, folder.path() / "snapshot");
  check_without_fault(options, folder.path(), faults);
  std::vector<Outcome> outcomes(faults.size());
  std::atomic<std::size_t> next = 0, done = 0;
  const auto work = [&](unsigned worker) {
    const Copy copy(options, folder.path(), worker);
    for (std::size_t i; (i = next++) < faults.size();) {
      try {
        outcomes[i] = outcome_of(options, copy, faults[i]);
      } catch (const std::exception& error) {
        outcomes[i] = {"survived", std::string("could not be planted: ") + error.what(), 0};
      }
      show(faults[i].name + ": " + outcomes[i].kind + (outcomes[i].by.empty() ? "" : ", " + outcomes[i].by), ++done, faults.size());
    }
  };
  std::vector<std::thread> workers;
  for (unsigned w = 1; w <= options.jobs; ++w) workers.emplace_back(work, w);
  for (auto& worker : workers) worker.join();

  std::ostringstream report;
  report << "fault\twhat\toutcome\tby\tseconds\n";
  int caught = 0, survived = 0;
  for (std::size_t i = 0; i < faults.size(); ++i) {
    caught += outcomes[i].kind == "caught";
    survived += outcomes[i].kind == "survived";
    report << faults[i].name << '\t' << faults[i].what << '\t' << outcomes[i].kind << '\t' << outcomes[i].by << '\t' << outcomes[i].seconds << '\n';
  }
  if (!options.report.empty()) std::ofstream(options.report) << report.str();
  std::printf("%zu faults planted: %d caught, %d survived, %zu argued to be without effect\n", faults.size(), caught, survived,
              faults.size() - static_cast<std::size_t>(caught + survived));
  return survived == 0 ? 0 : 1;
}

Options options_of(int argc, char** argv) {
  Options options;
  std::vector<std::string> places;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const auto value = [&] { return i + 1 < argc ? std::string(argv[++i]) : throw std::runtime_error(word + " takes a value"); };
    if (word == "--check") options.check = true;
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
    std::erase_if(faults, [](const Fault& fault) { return !fault.harmless.empty() || fault.slow; });
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
